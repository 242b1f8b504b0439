// A downloader, its image directory, and a server with pictures.
#pragma once

#include <tzplatform_config.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <functional>
#include <sstream>
#include <string>
#include <vector>

#include "HttpServer.h"
#include "ImageCurlDownloader.h"
#include "ObservedTest.h"

inline bool openGate(const std::function<void()>& step)
{
    step();
    return true;
}

inline const std::string& folder()
{
    static const std::string path = tzplatform_mkpath(TZ_USER_CONTENT, "tmp");
    return path;
}

inline std::string fileOf(const std::string& name)
{
    return folder() + "/" + name;
}

inline std::string contentOf(const std::string& path)
{
    std::ifstream file(path, std::ios::binary);
    std::ostringstream text;
    text << file.rdbuf();
    return text.str();
}

// The names in the image directory, in byte order.
inline List files()
{
    List names;
    std::error_code none;
    for (const std::filesystem::directory_entry& entry : std::filesystem::directory_iterator(folder(), none))
        names.push_back(entry.path().filename());
    std::sort(names.begin(), names.end());
    return names;
}

class ImageDownload : public ObservedTest {
  protected:
    ImageDownload()
    {
        const auto picture = [this](const httplib::Request&, httplib::Response& response) {
            response.set_content(picture_, "image/png");
        };
        server.answer("/missing.png", 404, "no such picture");
        server.answer("/created.png", 201, "new");
        server.answer("/empty.png", 200, "");
        server.answer("/other.png", 200, "other");
        server.breakOff("/broken.png", "half of it");
        server.redirect("/moved.png", "/milk.png");
        server.redirect("/lost.png", "/missing.png");
        redirects();
        server.Get(".*", picture);
        server.start();
        TestSupport::Calls::reset();
    }

    bool start(int id, const std::string& path)
    {
        return downloader.startDownload(id, server.url(path).c_str(), openGate);
    }

    // What ended up on the disk for the path, and nothing else.
    List filesAfter(const std::string& path)
    {
        downloader.clearAllDownloadedImages();
        start(10, path);
        return files();
    }

    const std::string& picture() const { return picture_; }

    HttpServer server;
    Util::ImageCurlDownloader downloader;

  private:
    // "/again/N.png" leads to N-1 and so on to the picture.
    void redirects()
    {
        server.Get(R"(/again/(\d+)\.png)",
                   [this](const httplib::Request& request, httplib::Response& response) {
                       const int left = std::stoi(request.matches[1]);
                       if (left == 0)
                           response.set_content(picture_, "image/png");
                       else
                           response.set_redirect("/again/" + std::to_string(left - 1) + ".png");
                   });
    }

    const std::string picture_ = std::string("\x89PNG\r\n\x1A\n\0\0", 10) + std::string(100'000, '\xA5');
};
