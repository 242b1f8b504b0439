// Pictures live as long as the server, so that content providers refer to their bytes.
#include "PictureRoute.h"

#include "Responses.h"

#include <algorithm>

namespace Appliance::StandIn {
namespace {

using std::chrono::milliseconds;

constexpr milliseconds usualPause{50};

struct Drops {
    std::size_t size;
    milliseconds pause;  // before each
};

// So that `size` bytes leave over `time`, not faster.
Drops dropsFor(std::size_t size, milliseconds time)
{
    const auto wanted = static_cast<std::size_t>(std::max<std::int64_t>(time / usualPause, 1));
    const std::size_t dropSize = size / wanted + 1;
    const std::size_t drops = (size + dropSize - 1) / dropSize;
    return {dropSize, time / static_cast<std::int64_t>(drops) + milliseconds(1)};
}

}  // namespace

PictureRoute::PictureRoute(const Pictures& usedPictures, const Connections& usedConnections)
    : pictures(usedPictures), connections(usedConnections)
{
}

void PictureRoute::handle(const httplib::Request& request, httplib::Response& response) const
{
    auto wanted = parsePicturePath(request.path);
    const Picture* picture = wanted ? pictures.find(wanted->name) : nullptr;
    if (picture == nullptr)
        return sendError(response, 404, "no such picture");

    PictureTrouble& trouble = wanted->trouble;
    if (trouble.redirect) {
        trouble.redirect = false;
        response.set_redirect(picturePath(trouble, wanted->name));
    } else if (trouble.status) {
        sendError(response, *trouble.status, "asked for by the path");
    } else if (trouble.stall) {
        stall(request, response, *picture);
    } else if (trouble.slow.count() > 0) {
        trickle(request, response, *picture, trouble.slow);
    } else {
        send(response, 200, {picture->bytes, picture->contentType});
    }
}

void PictureRoute::stall(const httplib::Request& request, httplib::Response& response,
                         const Picture& picture) const
{
    response.status = 200;
    response.set_content_provider(
        picture.bytes.size(), picture.contentType,
        [this, &request, &picture](std::size_t, std::size_t, httplib::DataSink& sink) {
            sink.write(picture.bytes.data(), picture.bytes.size() / 2);
            return connections.wait(request, std::nullopt);
        });
}

void PictureRoute::trickle(const httplib::Request& request, httplib::Response& response,
                           const Picture& picture, milliseconds time) const
{
    response.status = 200;
    const Drops drops = dropsFor(picture.bytes.size(), time);
    response.set_content_provider(
        picture.bytes.size(), picture.contentType,
        [this, &request, &picture, drops](std::size_t offset, std::size_t left, httplib::DataSink& sink) {
            return connections.wait(request, drops.pause) &&
                   sink.write(picture.bytes.data() + offset, std::min(drops.size, left));
        });
}

}  // namespace Appliance::StandIn
