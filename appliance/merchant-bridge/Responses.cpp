// A content provider that returns false makes the HTTP library close the connection where it is.
#include "Responses.h"

#include "Connections.h"

#include <utility>

namespace Appliance::MerchantBridge {
namespace {

// The status says so: what follows it would be read as the next response.
bool forbidsBody(int status)
{
    return status == 204 || status == 304;
}

std::string bodyFor(int status, Answer& answer)
{
    return forbidsBody(status) ? "" : std::move(answer.body);
}

}  // namespace

void send(httplib::Response& response, int status, Answer answer)
{
    response.status = status;
    response.set_content(bodyFor(status, answer), answer.contentType);
}

void sendHalf(httplib::Response& response, int status, Answer answer)
{
    response.status = status;
    std::string half = bodyFor(status, answer);
    const std::size_t size = half.size();
    response.set_content_provider(
        size, answer.contentType,
        [body = std::move(half)](std::size_t, std::size_t, httplib::DataSink& sink) {
            sink.write(body.data(), body.size() / 2);
            return false;
        });
}

void sendNothing(const httplib::Request& request, httplib::Response& response)
{
    Connections::reset(request.ssl);
    response.status = noAnswer;
}

}  // namespace Appliance::MerchantBridge
