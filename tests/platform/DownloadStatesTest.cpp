// Which call is refused in which state, and with which code.
#include <limits>

#include "DownloadFixture.h"

namespace {

constexpr int kOk = DOWNLOAD_ERROR_NONE;
constexpr int kState = DOWNLOAD_ERROR_INVALID_STATE;
constexpr int kNull = DOWNLOAD_ERROR_INVALID_PARAMETER;
constexpr int kUnknown = DOWNLOAD_ERROR_ID_NOT_FOUND;

void ignoreState(int, download_state_e, void*) {}
void ignoreProgress(int, unsigned long long, void*) {}

struct Operation {
    const char* name;
    int (*call)(int id);
    // In READY, QUEUED, DOWNLOADING, PAUSED, COMPLETED, FAILED, CANCELED.
    std::vector<int> codes;
};

void PrintTo(const Operation& operation, std::ostream* out)
{
    *out << operation.name;
}

int getPath(int id)
{
    char* path = nullptr;
    const int result = download_get_downloaded_file_path(id, &path);
    std::free(path);
    return result;
}

template <typename Value, int (*Get)(int, Value*)>
int get(int id)
{
    Value value{};
    return Get(id, &value);
}

const std::vector<int> kSettings = {kOk, kState, kState, kState, kState, kOk, kOk};
const std::vector<int> kAlways(7, kOk);

// What a setting answers to a value that it cannot take: the state is looked at before.
std::vector<int> refused(int code)
{
    return {code, kState, kState, kState, kState, code, code};
}

const std::vector<Operation> kOperations = {
    {"set_url", [](int id) { return download_set_url(id, "http://localhost:1/"); }, kSettings},
    {"set_network_type", [](int id) { return download_set_network_type(id, DOWNLOAD_NETWORK_WIFI); },
     kSettings},
    {"set_destination", [](int id) { return download_set_destination(id, "/"); }, kSettings},
    {"set_file_name", [](int id) { return download_set_file_name(id, "a"); }, kSettings},
    {"set_url_of_no_web", [](int id) { return download_set_url(id, "milk"); },
     refused(DOWNLOAD_ERROR_INVALID_URL)},
    {"set_network_type_unknown",
     [](int id) { return download_set_network_type(id, static_cast<download_network_type_e>(4)); },
     refused(DOWNLOAD_ERROR_INVALID_NETWORK_TYPE)},
    {"set_destination_without_folder", [](int id) { return download_set_destination(id, "milk"); },
     refused(DOWNLOAD_ERROR_INVALID_DESTINATION)},
    {"set_file_name_with_folder", [](int id) { return download_set_file_name(id, "a/b"); },
     refused(DOWNLOAD_ERROR_INVALID_PARAMETER)},
    {"set_state_changed_cb", [](int id) { return download_set_state_changed_cb(id, ignoreState, nullptr); },
     kSettings},
    {"set_progress_cb", [](int id) { return download_set_progress_cb(id, ignoreProgress, nullptr); },
     kSettings},
    {"unset_state_changed_cb", download_unset_state_changed_cb, kAlways},
    {"unset_progress_cb", download_unset_progress_cb, kAlways},
    {"start", download_start, {kOk, kState, kState, kOk, kState, kOk, kOk}},
    {"pause", download_pause, {kState, kOk, kOk, kState, kState, kState, kState}},
    {"cancel", download_cancel, {kState, kOk, kOk, kOk, kState, kState, kState}},
    {"get_downloaded_file_path", getPath, {kState, kState, kState, kState, kOk, kState, kState}},
    {"get_state", get<download_state_e, download_get_state>, kAlways},
    {"get_error", get<download_error_e, download_get_error>, kAlways},
    {"get_http_status", get<int, download_get_http_status>, kAlways},
    {"get_content_size", get<unsigned long long, download_get_content_size>, kAlways},
    {"destroy", download_destroy, kAlways},
};

class DownloadOperation : public Downloads, public testing::WithParamInterface<Operation> {
  protected:
    void bringTo(int state, TestDownload& download)
    {
        switch (state) {
            case DOWNLOAD_STATE_READY:
                EXPECT_EQ(download_set_url(download.id, server.url("/silent.png").c_str()), kOk);
                return;
            case DOWNLOAD_STATE_QUEUED:
                start(download, "/silent.png");
                break;
            case DOWNLOAD_STATE_COMPLETED:
                start(download, "/milk.png");
                break;
            case DOWNLOAD_STATE_FAILED:
                start(download, "/missing.png");
                break;
            default:
                start(download, "/halves.png");
                ASSERT_TRUE(download.heard.waitFor(DOWNLOAD_STATE_DOWNLOADING));
        }
        if (state == DOWNLOAD_STATE_PAUSED) {
            EXPECT_EQ(download_pause(download.id), kOk);
        }
        if (state == DOWNLOAD_STATE_CANCELED) {
            EXPECT_EQ(download_cancel(download.id), kOk);
        }
        ASSERT_TRUE(download.heard.waitFor(state));
    }
};

}  // namespace

TEST_P(DownloadOperation, AnswersByState)
{
    for (int state = DOWNLOAD_STATE_READY; state <= DOWNLOAD_STATE_CANCELED; ++state) {
        TestDownload download;
        bringTo(state, download);
        EXPECT_EQ(GetParam().call(download.id), GetParam().codes.at(static_cast<size_t>(state - 1)))
            << "in state " << state;
    }
}

TEST_P(DownloadOperation, KnowsNoOtherId)
{
    TestDownload download;
    const int highest = std::numeric_limits<int>::max();
    for (const int id : {0, -1, download.id + 1, highest, std::numeric_limits<int>::min()})
        EXPECT_EQ(GetParam().call(id), kUnknown) << id;
}

INSTANTIATE_TEST_SUITE_P(All, DownloadOperation, testing::ValuesIn(kOperations),
                         [](const auto& tested) { return tested.param.name; });

TEST_F(Downloads, NullIsRefusedBeforeAnythingElse)
{
    constexpr int unknown = 0;
    EXPECT_EQ(download_create(nullptr), kNull);
    EXPECT_EQ(download_set_url(unknown, nullptr), kNull);
    EXPECT_EQ(download_set_destination(unknown, nullptr), kNull);
    EXPECT_EQ(download_set_file_name(unknown, nullptr), kNull);
    EXPECT_EQ(download_set_state_changed_cb(unknown, nullptr, nullptr), kNull);
    EXPECT_EQ(download_set_progress_cb(unknown, nullptr, nullptr), kNull);
    EXPECT_EQ(download_get_downloaded_file_path(unknown, nullptr), kNull);
    EXPECT_EQ(download_get_state(unknown, nullptr), kNull);
    EXPECT_EQ(download_get_error(unknown, nullptr), kNull);
    EXPECT_EQ(download_get_http_status(unknown, nullptr), kNull);
    EXPECT_EQ(download_get_content_size(unknown, nullptr), kNull);
}

TEST_F(Downloads, ThereAre32AndThenOneMoreForEachThatIsDestroyed)
{
    std::vector<int> ids(32);
    for (int& id : ids) {
        EXPECT_EQ(download_create(&id), kOk);
        EXPECT_GT(id, 0);
    }
    EXPECT_TRUE(std::is_sorted(ids.begin(), ids.end()));
    int other = -7;
    EXPECT_EQ(download_create(&other), DOWNLOAD_ERROR_TOO_MANY_DOWNLOADS);
    EXPECT_EQ(other, -7);

    EXPECT_EQ(download_destroy(ids.front()), kOk);
    EXPECT_EQ(download_create(&ids.front()), kOk);
    EXPECT_GT(ids.front(), ids.back());
    for (const int id : ids)
        EXPECT_EQ(download_destroy(id), kOk);
}

TEST_F(Downloads, ANewOneIsReadyAndKnowsNothing)
{
    TestDownload download;

    EXPECT_EQ(download.state(), DOWNLOAD_STATE_READY);
    EXPECT_EQ(download.error(), kOk);
    EXPECT_EQ(download.httpStatus(), 0);
    EXPECT_EQ(download.contentSize(), 0U);
    EXPECT_EQ(download.path(), "");
}

TEST_F(Downloads, WithoutAnAddressNothingStarts)
{
    TestDownload download;

    EXPECT_EQ(download_start(download.id), DOWNLOAD_ERROR_INVALID_URL);
    EXPECT_EQ(download.state(), DOWNLOAD_STATE_READY);
    EXPECT_EQ(download.heard.states(), States());
}

TEST_F(Downloads, AnAddressIsOneOfTheWeb)
{
    TestDownload download;
    for (const char* url : {"http://a.example/", "https://a.example", "HTTP://a.example:80/b.png?c#d"})
        EXPECT_EQ(download_set_url(download.id, url), kOk) << url;
    for (const char* url : {"", "milk.png", "a.example/milk.png", "/milk.png", "file:///etc/passwd",
                            "ftp://a.example/milk.png", "http://", "http://a.example:70000/", "htp://a"})
        EXPECT_EQ(download_set_url(download.id, url), DOWNLOAD_ERROR_INVALID_URL) << url;
}

TEST_F(Downloads, ADestinationIsAFolderThatExists)
{
    std::ofstream(folder + "/file") << "no folder";
    TestDownload download;

    EXPECT_EQ(download_set_destination(download.id, folder.c_str()), kOk);
    for (const std::string& path : {folder + "/none", folder + "/file", std::string(), std::string(".")})
        EXPECT_EQ(download_set_destination(download.id, path.c_str()), DOWNLOAD_ERROR_INVALID_DESTINATION)
            << path;
}

TEST_F(Downloads, ThereAreFourNetworkTypes)
{
    TestDownload download;
    for (int type = 0; type <= 3; ++type)
        EXPECT_EQ(download_set_network_type(download.id, static_cast<download_network_type_e>(type)), kOk);
    for (const int type : {-1, 4})
        EXPECT_EQ(download_set_network_type(download.id, static_cast<download_network_type_e>(type)),
                  DOWNLOAD_ERROR_INVALID_NETWORK_TYPE);
}
