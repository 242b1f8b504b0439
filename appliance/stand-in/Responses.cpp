// A content provider that returns false makes the HTTP library close the connection where it is.
#include "Responses.h"

#include <utility>

namespace Appliance::StandIn {
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

// Announces the whole body, sends its first half and closes the connection.
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

// Resets the connection instead of answering.
void sendNothing(const Connections& connections, const httplib::Request& request, httplib::Response& response)
{
    connections.reset(request);
    response.status = noAnswer;
}

}  // namespace

void send(httplib::Response& response, int status, Answer answer)
{
    response.status = status;
    response.set_content(bodyFor(status, answer), answer.contentType);
}

void sendError(httplib::Response& response, int status, const std::string& message)
{
    send(response, status, errorAnswer(status, message));
}

void sendTroubled(const Connections& connections, const httplib::Request& request,
                  httplib::Response& response, const Trouble& trouble,
                  const std::function<Answer()>& makeAnswer)
{
    if (trouble.delay.count() > 0 && !connections.wait(request, trouble.delay))
        return sendNothing(connections, request, response);
    if (trouble.reset)
        return sendNothing(connections, request, response);
    const int status = trouble.status.value_or(200);
    const bool isError = status >= 300 && trouble.body == Body::Products;
    Answer answer = isError ? errorAnswer(status, "asked for by the search term") : makeAnswer();
    if (trouble.truncate)
        sendHalf(response, status, std::move(answer));
    else
        send(response, status, std::move(answer));
}

}  // namespace Appliance::StandIn
