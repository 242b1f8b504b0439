// The downloads' ids, steps, names and records.
#include "ImageDownloader.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <ostream>
#include <set>

#include "ImageDownloaderFixture.h"

namespace fs = std::filesystem;
using TestSupport::Calls;
using Util::ImageDownloader;

namespace {

// The calls of a start, in order.
const List kSteps = {"download_set_url",       "download_set_network_type",     "download_set_destination",
                     "download_set_file_name", "download_set_state_changed_cb", "download_set_progress_cb",
                     "download_start"};

List stepsMade()
{
    return Calls::order({"download_set_url", "download_set_network_type", "download_set_destination",
                         "download_set_file_name", "download_set_state_changed_cb",
                         "download_set_progress_cb", "download_start"});
}

class StartStep : public PlatformDownload, public testing::WithParamInterface<size_t> {};

struct Name {
    std::string path;
    std::string extension;
};

void PrintTo(const Name& name, std::ostream* out)
{
    *out << name.path;
}

class PlatformDownloadName : public PlatformDownload, public testing::WithParamInterface<Name> {};

std::string contentOf(const std::string& path)
{
    std::ifstream file(path, std::ios::binary);
    std::ostringstream text;
    text << file.rdbuf();
    return text.str();
}

}  // namespace

TEST_F(PlatformDownload, AnIdIsAskedForOnce)
{
    const int id = init();

    EXPECT_EQ(Calls::count("download_create"), 1U);
    EXPECT_NE(init(), id);
}

TEST_F(PlatformDownload, AnIdOf0IsAskedForAgain)
{
    for (size_t nth = 1; nth <= 3; ++nth)
        Calls::fail("download_create", 0, nth);
    init();

    EXPECT_EQ(Calls::count("download_create"), 4U);
}

TEST_F(PlatformDownload, After200TimesAnIdOf0IsTheId)
{
    Calls::failAlways("download_create", 0);

    EXPECT_EQ(downloader->initDownload(), 0);
    EXPECT_EQ(Calls::count("download_create"), 200U);
    EXPECT_EQ(errors(), List());
}

TEST_F(PlatformDownload, WhatTheLastAttemptReturnedIsTheErrorOfNoId)
{
    Calls::failAlways("download_create", DOWNLOAD_ERROR_OUT_OF_MEMORY);
    Calls::fail("download_create", DOWNLOAD_ERROR_IO_ERROR, 200);

    EXPECT_EQ(downloader->initDownload(), DOWNLOAD_ERROR_OUT_OF_MEMORY);
    EXPECT_EQ(Calls::count("download_create"), 200U);
}

TEST_F(PlatformDownload, TheLastOf200AttemptsMayStillSucceed)
{
    for (size_t nth = 1; nth < 200; ++nth)
        Calls::fail("download_create", DOWNLOAD_ERROR_OUT_OF_MEMORY, nth);
    init();

    EXPECT_EQ(Calls::count("download_create"), 200U);
}

TEST_F(PlatformDownload, StartsInAFixedOrderOfSteps)
{
    const int id = init();
    const std::string url = server.url("/halves.png");
    EXPECT_EQ(start(id, url), 0);

    const std::string number = std::to_string(id);
    EXPECT_EQ(stepsMade(), kSteps);
    EXPECT_EQ(callsOf("download_set_url"), List{number + " " + url});
    EXPECT_EQ(callsOf("download_set_network_type"), List{number + " 1"});
    EXPECT_EQ(callsOf("mkdir"), List{Util::imageFolder() + " 493"});
    EXPECT_EQ(callsOf("download_set_destination"), List{number + " " + Util::imageFolder()});
    EXPECT_EQ(callsOf("download_set_file_name"), List{number + " " + number + ".png"});
    EXPECT_EQ(callsOf("download_set_state_changed_cb"), List{number + " " + textOf(downloader.get())});
    EXPECT_EQ(callsOf("download_set_progress_cb"), List{number + " " + textOf(downloader.get())});
    EXPECT_EQ(callsOf("download_start"), List{number});
    EXPECT_EQ(Calls::order({"download_set_network_type", "mkdir", "download_set_destination"}),
              (List{"download_set_network_type", "mkdir", "download_set_destination"}));
    EXPECT_EQ(errors(), List());
}

TEST_P(StartStep, ThatFailsEndsTheStartWithItsCodeAndAnEmptyErrorLine)
{
    const int id = init();
    const std::string& step = kSteps[GetParam()];
    Calls::fail(step, DOWNLOAD_ERROR_NO_DATA);

    EXPECT_EQ(start(id, server.url("/milk.png"), this), DOWNLOAD_ERROR_NO_DATA);
    EXPECT_EQ(stepsMade(), List(kSteps.begin(), kSteps.begin() + static_cast<ptrdiff_t>(GetParam()) + 1));
    ASSERT_EQ(errors().size(), 1U);
    EXPECT_EQ(errors()[0].rfind("ImageDownloader.cpp: startDownload(", 0), 0U) << errors()[0];
    EXPECT_EQ(errorMessages(), List{""});
    // What is stored is stored before the last step.
    const bool isStored = step == "download_start";
    EXPECT_EQ(downloader->getStateCallback(id) != nullptr, isStored);
    EXPECT_EQ(downloader->getProgressCallback(id) != nullptr, isStored);
    EXPECT_EQ(downloader->getExtraData(id) != nullptr, isStored);
}

INSTANTIATE_TEST_SUITE_P(All, StartStep, testing::Range<size_t>(0, 7),
                         [](const auto& step) { return kSteps[step.param]; });

TEST_F(PlatformDownload, TheLineOfTheErrorTellsTheStep)
{
    const int id = init();
    std::set<std::string> lines;
    for (const std::string& step : kSteps) {
        Calls::fail(step, DOWNLOAD_ERROR_NO_DATA);
        start(id, server.url("/milk.png"));
        lines.insert(errors().back());
    }

    EXPECT_EQ(lines.size(), kSteps.size());
}

TEST_F(PlatformDownload, WithoutAnAddressTheFirstStepFails)
{
    EXPECT_EQ(downloader->startDownload(init(), nullptr, nullptr, nullptr, nullptr),
              DOWNLOAD_ERROR_INVALID_PARAMETER);
    EXPECT_EQ(stepsMade(), List{"download_set_url"});
}

TEST_F(PlatformDownload, WithoutAFolderTheThirdStepFails)
{
    std::ofstream(Util::imageFolder()) << "no folder";

    EXPECT_EQ(start(init(), server.url("/milk.png")), DOWNLOAD_ERROR_INVALID_DESTINATION);
    EXPECT_EQ(stepsMade().size(), 3U);
    EXPECT_EQ(errorMessages(), List{""});
}

TEST_P(PlatformDownloadName, IsTheIdAndWhatTheAddressSuggests)
{
    const int id = init();
    EXPECT_EQ(start(id, server.url(GetParam().path)), 0);

    const std::string number = std::to_string(id);
    const std::string name = number + "." + GetParam().extension;
    EXPECT_EQ(callsOf("download_set_file_name"), List{number + " " + name});
    ASSERT_TRUE(loop.run());
    char* path = nullptr;
    EXPECT_EQ(downloader->getDownloadedImagePath(id, &path), 0);
    ASSERT_NE(path, nullptr);
    EXPECT_EQ(path, Util::imageFolder() + "/" + name);
    EXPECT_EQ(contentOf(path), picture);
    std::free(path);
}

INSTANTIATE_TEST_SUITE_P(
    Extensions, PlatformDownloadName,
    testing::Values(Name{"/milk.gif", "gif"}, Name{"/milk.PNG", "png"}, Name{"/milk.jpg", "jpg"},
                    Name{"/milk.jpeg", "jpg"}, Name{"/milk.JPEG", "jpg"}, Name{"/milk.webp", "webp"},
                    Name{"/milk.WEBP", "WEBP"}, Name{"/png/milk.jpg", "png"}, Name{"/jpg/milk.gif", "gif"},
                    Name{"/gif/milk.png", "gif"}, Name{"/milk?format=PNG", "png"}, Name{"/milk.", ""},
                    Name{"/milk.webp?size=3", "webp?size=3"}, Name{"/milk.tar.bz", "bz"}));

TEST_F(PlatformDownload, AnAddressWithoutADotIsItselfTheExtensionAndNoName)
{
    const int id = init();
    const std::string url = server.url("/milk");

    EXPECT_EQ(start(id, url), DOWNLOAD_ERROR_INVALID_PARAMETER);
    const std::string number = std::to_string(id);
    EXPECT_EQ(callsOf("download_set_file_name"), List{number + " " + number + "." + url});
    EXPECT_EQ(errorMessages(), List{""});
}

TEST_F(PlatformDownload, ALongNameIsCutTo127Bytes)
{
    const int id = init();
    EXPECT_EQ(start(id, server.url("/milk." + std::string(300, 'x'))), 0);

    const std::string number = std::to_string(id);
    const std::string name = (number + "." + std::string(300, 'x')).substr(0, 127);
    EXPECT_EQ(callsOf("download_set_file_name"), List{number + " " + name});
}

TEST_F(PlatformDownload, WhatWasGivenForAnIdCanBeAskedFor)
{
    const int id = init();
    start(id, server.url("/halves.png"), this);
    EXPECT_EQ(downloader->getExtraData(id), this);

    downloader->getStateCallback(id)(id, State::PAUSED, nullptr);
    downloader->getProgressCallback(id)(id, 3, nullptr);
    EXPECT_EQ(states, std::vector<State>{State::PAUSED});
    EXPECT_EQ(progress, std::vector<uint64_t>{3});
}

TEST_F(PlatformDownload, AnUnknownIdHasEmptyFunctionsAndNothingElse)
{
    EXPECT_EQ(downloader->getExtraData(7), nullptr);
    EXPECT_THROW(downloader->getStateCallback(7)(7, State::NONE, nullptr), std::bad_function_call);
    EXPECT_THROW(downloader->getProgressCallback(7)(7, 0, nullptr), std::bad_function_call);
}

TEST_F(PlatformDownload, GivingUpAnIdForgetsItAndTakesItBackFromThePlatform)
{
    const int id = init();
    start(id, server.url("/halves.png"), this);
    Calls::reset();

    EXPECT_EQ(downloader->deinitDownload(id), 0);
    EXPECT_EQ(Calls::order({"download_unset_state_changed_cb", "download_unset_progress_cb",
                            "download_cancel", "download_destroy"}),
              (List{"download_unset_state_changed_cb", "download_unset_progress_cb", "download_destroy"}));
    EXPECT_EQ(downloader->getStateCallback(id), nullptr);
    EXPECT_EQ(downloader->getProgressCallback(id), nullptr);
    EXPECT_EQ(downloader->getExtraData(id), nullptr);
    EXPECT_EQ(downloader->deinitDownload(id), DOWNLOAD_ERROR_ID_NOT_FOUND);
    EXPECT_EQ(errors(), List());
}

TEST_F(PlatformDownload, TheResultOfGivingUpIsThatOfTheLastStep)
{
    const int id = init();
    Calls::fail("download_unset_state_changed_cb", DOWNLOAD_ERROR_IO_ERROR);
    Calls::fail("download_unset_progress_cb", DOWNLOAD_ERROR_IO_ERROR);
    EXPECT_EQ(downloader->deinitDownload(id), 0);

    const int other = init();
    Calls::fail("download_destroy", DOWNLOAD_ERROR_NO_DATA);
    EXPECT_EQ(downloader->deinitDownload(other), DOWNLOAD_ERROR_NO_DATA);
}

TEST_F(PlatformDownload, PausingResumingAndStoppingAreThePlatforms)
{
    const int id = init();
    start(id, server.url("/halves.png"));
    EXPECT_EQ(downloader->pauseDownload(id), 0);
    EXPECT_EQ(downloader->pauseDownload(id), DOWNLOAD_ERROR_INVALID_STATE);
    EXPECT_EQ(downloader->resumeDownload(id), 0);
    EXPECT_EQ(downloader->resumeDownload(id), DOWNLOAD_ERROR_INVALID_STATE);
    EXPECT_EQ(downloader->stopDownload(id), 0);
    EXPECT_EQ(downloader->stopDownload(id), DOWNLOAD_ERROR_INVALID_STATE);

    const std::string number = std::to_string(id);
    EXPECT_EQ(callsOf("download_pause"), (List{number, number}));
    EXPECT_EQ(callsOf("download_start"), (List{number, number, number}));
    EXPECT_EQ(callsOf("download_cancel"), (List{number, number}));
    EXPECT_EQ(errors(), List());
}

TEST_F(PlatformDownload, ThePathOfAnUnfinishedPictureIsRefused)
{
    char* path = nullptr;

    EXPECT_EQ(downloader->getDownloadedImagePath(init(), &path), DOWNLOAD_ERROR_INVALID_STATE);
    EXPECT_EQ(path, nullptr);
}

TEST_F(PlatformDownload, StatesKeepTheirNumbersAndOtherNumbersAreNone)
{
    for (int number = 0; number <= 7; ++number)
        EXPECT_EQ(ImageDownloader::convertDownloadState(static_cast<download_state_e>(number)),
                  static_cast<State>(number));
    for (const int number : {-1, 8, 1000})
        EXPECT_EQ(ImageDownloader::convertDownloadState(static_cast<download_state_e>(number)), State::NONE);
}

TEST_F(PlatformDownload, ClearingRemovesTheFolderAndTheNextStartMakesItAnew)
{
    start(init(), server.url("/milk.png"));
    ASSERT_TRUE(loop.run());
    EXPECT_FALSE(fs::is_empty(Util::imageFolder()));

    EXPECT_EQ(downloader->clearAllDownloadedImages(), 0);
    EXPECT_EQ(callsOf("system"), List{"rm -rf " + Util::imageFolder()});
    EXPECT_FALSE(fs::exists(Util::imageFolder()));

    EXPECT_EQ(start(init(), server.url("/milk.png")), 0);
    ASSERT_TRUE(loop.run());
    EXPECT_EQ(contentOf(Util::imageFolder() + "/" + std::to_string(ids.back()) + ".png"), picture);
}
