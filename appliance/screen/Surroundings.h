// Watches what an engineer wants to see of the appliance, and tells the timeline of each change.
#pragma once

#include <Ecore.h>

#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>

#include "BusMonitor.h"
#include "FolderWatch.h"
#include "LogFollower.h"
#include "PictureFolder.h"
#include "Places.h"
#include "StatusRecord.h"
#include "Timeline.h"

namespace Screen {

// Main loop only. What cannot be watched is left out, and a line in the platform log says why.
class Surroundings {
  public:
    static constexpr std::size_t LogLinesBefore = 100;   // of the log, shown from the start
    static constexpr std::size_t LogLineBytes = 4000;    // what is longer is cut
    static constexpr std::size_t AppMessagesShown = 20;  // of what an app received, as far as
    static constexpr std::size_t AppBytesShown = 32 * 1024;
    static constexpr std::size_t AppsShown = 200;

    using LineHandler = std::function<void(const std::string& line)>;

    // `onLogLine` is told of each line that is written from now on. The timeline outlives this.
    Surroundings(Timeline& timeline, const Places& places, LineHandler onLogLine);
    ~Surroundings();
    Surroundings(const Surroundings&) = delete;
    Surroundings& operator=(const Surroundings&) = delete;

    const PictureFolder& pictures() const { return pictures_; }

    // Reads on at once what the services have written: what they say before a message is then known.
    void catchUp();

    const std::optional<Appliance::StatusRecord>& record() const { return record_; }

  private:
    void watch(std::unique_ptr<Appliance::FolderWatch>& watch, const std::filesystem::path& folder,
               const std::function<void(const std::string& name)>& onChange);
    void noteChangeOfRoot(const std::string& name);
    void watchMedia();
    void watchPictures();
    void watchFlag();
    void watchBus(const std::string& address);
    void followLog(const std::filesystem::path& file);
    void noteLine(const std::string& line);
    void readAppFile(const std::string& name);
    void noteApp(const std::string& appId, bool isThere);
    void noteLostBus();
    void readAnew();
    void readSoon();
    void readStores();
    static Eina_Bool onTime(void* self);

    Timeline& timeline_;
    const Places places_;
    LineHandler onLogLine_;
    PictureFolder pictures_;
    bool isOldLine_ = true;
    std::optional<Appliance::StatusRecord> record_;
    nlohmann::json apps_ = nlohmann::json::object();
    int failures_ = 0;              // of reading the record, one after the other
    Ecore_Timer* timer_ = nullptr;  // runs while a change is to be read
    std::unique_ptr<Appliance::FolderWatch> screenWatch_;
    std::unique_ptr<Appliance::FolderWatch> rootWatch_;
    std::unique_ptr<Appliance::FolderWatch> flagWatch_;
    std::unique_ptr<Appliance::FolderWatch> mediaWatch_;
    std::unique_ptr<Appliance::FolderWatch> pictureWatch_;
    std::unique_ptr<Appliance::LogFollower> log_;
    std::unique_ptr<Appliance::BusMonitor> bus_;
};

}  // namespace Screen
