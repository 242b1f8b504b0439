#include "Surroundings.h"

#include <exception>
#include <utility>

#include "Guarded.h"
#include "JsonFile.h"
#include "JsonText.h"
#include "MessageJson.h"
#include "UiLog.h"

namespace Screen {

namespace {

// Changes come in bursts: what is read once they are over is read once.
constexpr double Settled = 0.05;  // seconds
// How often a store that cannot be read is tried.
constexpr int FailuresBorne = 40;

// What an app received, the newest only.
nlohmann::json withNewest(nlohmann::json content)
{
    if (content.is_object() && content.contains("messages") && content["messages"].is_array()) {
        nlohmann::json newest = nlohmann::json::array();
        std::size_t bytes = 0;
        for (auto at = content["messages"].rbegin(); at != content["messages"].rend(); ++at) {
            bytes += jsonText(*at).size();
            if (newest.size() == Surroundings::AppMessagesShown || bytes > Surroundings::AppBytesShown) {
                break;
            }
            newest.insert(newest.begin(), *at);
        }
        content["messages"] = std::move(newest);
    }
    return content;
}

nlohmann::json recordJson(const std::optional<Appliance::StatusRecord>& record)
{
    nlohmann::json columns;
    for (std::size_t i = 0; record && i < Appliance::StatusColumns.size(); ++i) {
        const std::optional<int>& value = (*record)[i];
        columns[Appliance::StatusColumns[i]] = value ? nlohmann::json(*value) : nlohmann::json();
    }
    return columns;
}

}  // namespace

Surroundings::Surroundings(Timeline& timeline, const Places& places, LineHandler onLogLine)
    : timeline_(timeline), places_(places), onLogLine_(std::move(onLogLine)), pictures_(places.pictures())
{
    watch(screenWatch_, places_.screenFolder(), [this](const std::string& name) { readAppFile(name); });
    watch(rootWatch_, places_.root, [this](const std::string& name) { noteChangeOfRoot(name); });
    watchMedia();
    watchFlag();
    readAppFile("");
    readStores();
    followLog(places_.log);
    watchBus(places_.bus);
}

Surroundings::~Surroundings()
{
    if (timer_ != nullptr) {
        ecore_timer_del(timer_);
    }
}

void Surroundings::watch(std::unique_ptr<Appliance::FolderWatch>& watch, const std::filesystem::path& folder,
                         const std::function<void(const std::string&)>& onChange)
{
    try {
        std::filesystem::create_directories(folder);
        watch = std::make_unique<Appliance::FolderWatch>(folder, [onChange](const std::string& name) {
            guarded("A change is not shown", [&] { onChange(name); });
        });
    } catch (const std::exception& error) {
        UI_ERROR("Not watched: %s", error.what());
    }
}

// A folder that is removed and made anew needs another watch.
void Surroundings::noteChangeOfRoot(const std::string& name)
{
    const auto isMeant = [&name](const std::filesystem::path& folder) {
        return name.empty() || name == folder.filename();
    };
    if (isMeant(places_.media())) {
        watchMedia();
    }
    if (isMeant(places_.settings())) {
        watchFlag();
    }
    readAnew();
}

void Surroundings::watchMedia()
{
    watch(mediaWatch_, places_.media(), [this](const std::string&) { watchPictures(); });
    watchPictures();
}

void Surroundings::watchFlag()
{
    watch(flagWatch_, places_.flagFolder(), [this](const std::string&) { readAnew(); });
    readAnew();
}

// A search removes the folder and makes it anew.
void Surroundings::watchPictures()
{
    pictureWatch_.reset();
    std::error_code error;
    if (std::filesystem::is_directory(places_.pictures(), error)) {
        try {
            pictureWatch_ = std::make_unique<Appliance::FolderWatch>(
                places_.pictures(), [this](const std::string&) { readAnew(); });
        } catch (const std::exception&) {
            // It is gone again, and its parent's watch tells when it comes back.
        }
    }
    readAnew();
}

void Surroundings::followLog(const std::filesystem::path& file)
{
    if (file.empty()) {
        return;
    }
    try {
        log_ = std::make_unique<Appliance::LogFollower>(
            file, Appliance::startOfLastLines(file, LogLinesBefore),
            [this](const std::string& line) { guarded("A line is not shown", [&] { noteLine(line); }); });
        log_->readOn();
    } catch (const std::exception& error) {
        UI_ERROR("Log not followed: %s", error.what());
    }
    isOldLine_ = false;
}

void Surroundings::noteLine(const std::string& line)
{
    timeline_.put("log", {{"line", line.size() > LogLineBytes ? line.substr(0, LogLineBytes) + "…" : line}});
    if (!isOldLine_) {
        onLogLine_(line);
    }
}

void Surroundings::watchBus(const std::string& address)
{
    try {
        bus_ = std::make_unique<Appliance::BusMonitor>(
            address,
            [this](const Appliance::BusMessage& message) {
                guarded("A message is not shown", [&] { timeline_.put("message", toJson(message)); });
            },
            [this](const std::string& appId, bool isThere) {
                guarded("An app is not shown", [&] { noteApp(appId, isThere); });
            },
            [this] { guarded("The end of the bus is not shown", [&] { noteLostBus(); }); });
    } catch (const std::exception& error) {
        UI_ERROR("Messages not watched: %s", error.what());
    }
}

void Surroundings::noteApp(const std::string& appId, bool isThere)
{
    if (apps_.size() < AppsShown || apps_.contains(appId)) {
        apps_[appId] = isThere;
        timeline_.put("apps", apps_);
    }
}

void Surroundings::noteLostBus()
{
    UI_ERROR("The bus is lost, and messages are no longer shown");
    for (auto& [appId, isThere] : apps_.items()) {
        isThere = false;
    }
    timeline_.put("apps", apps_);
    timeline_.put("notice", {{"text", "The bus is lost."}, {"level", "error"}});
}

void Surroundings::readAppFile(const std::string& name)
{
    for (const char* app : {"partner", "assistant"}) {
        const std::string file = std::string(app) + ".json";
        if (name == file || name.empty()) {  // without a name: it may be any
            const auto content = Appliance::readJsonFile(places_.screenFolder() / file);
            timeline_.put(app, content ? withNewest(*content) : nlohmann::json());
        }
    }
}

// A store that cannot be read is read again a few times, until the next change.
void Surroundings::readAnew()
{
    failures_ = 0;
    readSoon();
}

void Surroundings::readSoon()
{
    if (timer_ == nullptr) {
        timer_ = ecore_timer_add(Settled, onTime, this);
    }
}

Eina_Bool Surroundings::onTime(void* self)
{
    Surroundings& surroundings = *static_cast<Surroundings*>(self);
    surroundings.timer_ = nullptr;
    guarded("The stores are not shown", [&] { surroundings.readStores(); });
    return ECORE_CALLBACK_CANCEL;
}

void Surroundings::readStores()
{
    try {
        record_ = Appliance::readStatusRecord(places_.dataStore(), std::chrono::milliseconds(0));
        failures_ = 0;
    } catch (const std::exception&) {
        // Somebody writes to it, or it is none.
        if (++failures_ < FailuresBorne) {
            readSoon();
        }
    }
    const std::optional<int> flag = Appliance::readSearchFlag();
    timeline_.put("record", recordJson(record_));
    timeline_.put("flag", flag ? nlohmann::json(*flag) : nlohmann::json());
    timeline_.put("images", pictures_.list());
}

void Surroundings::catchUp()
{
    if (log_) {
        log_->readOn();
    }
    readStores();
}

}  // namespace Screen
