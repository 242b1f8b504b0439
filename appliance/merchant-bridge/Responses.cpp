// A content provider that returns false makes the HTTP library close the connection where it is.
#include "Responses.h"

#include "Connections.h"

#include <utility>

namespace Appliance::MerchantBridge {

void send(httplib::Response& response, int status, Answer answer)
{
    response.status = status;
    response.set_content(answer.body, answer.contentType);
}

void sendHalf(httplib::Response& response, int status, Answer answer)
{
    response.status = status;
    const std::size_t size = answer.body.size();
    response.set_content_provider(
        size, answer.contentType,
        [body = std::move(answer.body)](std::size_t, std::size_t, httplib::DataSink& sink) {
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
