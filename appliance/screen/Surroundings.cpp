#include "Surroundings.h"

#include <exception>
#include <utility>

#include "JsonFile.h"
#include "MessageJson.h"
#include "UiLog.h"

namespace Screen {

namespace {

// Changes come in bursts: what is read once they are over is read once.
constexpr double Settled = 0.05;  // seconds

// What an app received, the newest only.
nlohmann::json withNewest(nlohmann::json content)
{
    if (content.is_object() && content.contains("messages") && content["messages"].is_array()) {
        nlohmann::json& messages = content["messages"];
        if (messages.size() > Surroundings::AppMessagesShown) {
            messages.erase(messages.begin(),
                           messages.end() - static_cast<std::ptrdiff_t>(Surroundings::AppMessagesShown));
        }
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
    const auto onStoreChange = [this](const std::string&) { readSoon(); };
    watch(screenWatch_, places_.screenFolder(), [this](const std::string& name) { readAppFile(name); });
    watch(rootWatch_, places_.root, onStoreChange);
    watch(flagWatch_, places_.flagFolder(), onStoreChange);
    watch(mediaWatch_, places_.media(), [this](const std::string&) { watchPictures(); });
    watchPictures();
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
        watch = std::make_unique<Appliance::FolderWatch>(folder, onChange);
    } catch (const std::exception& error) {
        UI_ERROR("Not watched: %s", error.what());
    }
}

// A search removes the folder and makes it anew.
void Surroundings::watchPictures()
{
    pictureWatch_.reset();
    std::error_code error;
    if (std::filesystem::is_directory(places_.pictures(), error)) {
        try {
            pictureWatch_ = std::make_unique<Appliance::FolderWatch>(
                places_.pictures(), [this](const std::string&) { readSoon(); });
        } catch (const std::exception&) {
            // It is gone again, and its parent's watch tells when it comes back.
        }
    }
    readSoon();
}

void Surroundings::followLog(const std::filesystem::path& file)
{
    if (file.empty()) {
        return;
    }
    try {
        log_ =
            std::make_unique<Appliance::LogFollower>(file, Appliance::startOfLastLines(file, LogLinesBefore),
                                                     [this](const std::string& line) { noteLine(line); });
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
            [this](const Appliance::BusMessage& message) { timeline_.put("message", toJson(message)); },
            [this](const std::string& appId, bool isThere) {
                apps_[appId] = isThere;
                timeline_.put("apps", apps_);
            },
            [] {});
    } catch (const std::exception& error) {
        UI_ERROR("Messages not watched: %s", error.what());
    }
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
    surroundings.readStores();
    return ECORE_CALLBACK_CANCEL;
}

void Surroundings::readStores()
{
    try {
        record_ = Appliance::readStatusRecord(places_.dataStore());
    } catch (const std::exception&) {
        // It is being made, and the watch tells when it goes on.
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
