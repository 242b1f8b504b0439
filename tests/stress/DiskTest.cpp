// A disk that is full or read-only, and an image directory that is something else: what is lost, and that
// nothing is once the disk is well again.
#include <signal.h>
#include <sys/resource.h>

#include "OwnMounts.h"
#include "ServiceWorld.h"
#include "SmallDisk.h"

namespace ServiceTest {

namespace {

namespace fs = std::filesystem;
using TestSupport::RawMessage;
using Texts = std::vector<std::string>;

constexpr std::size_t Roomy = 4 << 20;  // for everything that a test writes
const std::string WriteError =
    "startDownload: curl_easy_perform failed, result: Failed writing received data to disk/application";
const std::string OpenError = "startDownload: Failed to open file to image data write";
const std::string StatusError = "processSearch: updateStatus() failed";
const std::string SettingError = "processSearch: vconf_set_int() failed";

std::string lost(int index)
{
    return "operator(): Failed to startDownload for index " + std::to_string(index);
}

Texts threeTimes(const std::string& error)
{
    return {error, lost(0), error, lost(1), error, lost(2)};
}

class ADisk : public ServiceWorld {
  protected:
    void start()
    {
        ui = std::make_unique<UiPeer>();
        startService();
        resultMessage();
        atRest = threads();
    }

    /** The lists of three products come, whatever becomes of the pictures; no picture is on its way any more.
     */
    RawMessage searchForThree()
    {
        stock(threeProducts());
        EXPECT_EQ(search(), "");
        RawMessage result = resultMessage();
        EXPECT_EQ(listOf(result, "key_product_names"), (Texts{"Whole Milk", "Oat Milk", "Goat Milk"}));
        EXPECT_TRUE(waitForThreads(atRest));
        return result;
    }

    /** What was to come to the UI app has come before the next result does. */
    void expectNoMorePictures() { EXPECT_EQ(resultMessage().operation, serviceOperation("result")); }

    void searchWithoutPictures()
    {
        EXPECT_EQ(ui->confirm(searchForThree()), "");
        expectNoMorePictures();
    }

    std::size_t atRest = 0;
};

/** Somebody else's folder, with files that are called like pictures. */
class OtherFolder {
  public:
    explicit OtherFolder(fs::path path) : path_(std::move(path))
    {
        fs::create_directories(path_ / "albums");
        for (const char* name : {"1.png", "2.jpg", "3.gif", "albums/1.png"})
            std::ofstream(path_ / name) << name;
    }

    const fs::path& path() const { return path_; }

    void expectUntouched() const
    {
        for (const char* name : {"1.png", "2.jpg", "3.gif", "albums/1.png"})
            EXPECT_EQ(contentOf(path_ / name), name);
        EXPECT_EQ(std::distance(fs::recursive_directory_iterator(path_), {}), 5) << "files and the folder";
    }

  private:
    fs::path path_;
};

// Full disks.

class AFullDisk : public ADisk {
  protected:
    void SetUp() override
    {
        if (!whyNoMounts().empty())
            GTEST_SKIP() << whyNoMounts();
    }

    void TearDown() override
    {
        ServiceWorld::TearDown();
        disk.reset();
    }

    void putPicturesOn(std::size_t bytes, std::size_t files = 0)
    {
        disk = std::make_unique<SmallDisk>(root + "/media", bytes, files);
    }

    void putEverythingOn(std::size_t bytes)
    {
        disk = std::make_unique<SmallDisk>(root, bytes);
        authority.writeAuthority(root + "/ca.pem");
        writeTokens();
    }

    Texts filesOf(const std::string& folder) const
    {
        Texts names;
        for (const auto& entry : fs::directory_iterator(root + "/" + folder))
            names.push_back(entry.path().filename());
        return names;
    }

    std::unique_ptr<SmallDisk> disk;
};

TEST_F(AFullDisk, CostsASearchItsPicturesAndTheNextOneNothing)
{
    start();
    putPicturesOn(Roomy);
    disk->fill();

    searchWithoutPictures();

    EXPECT_EQ(errors(), threeTimes(WriteError));
    EXPECT_EQ(status(), (StatusRecord{1, 1, 3, {}, {}}));
    disk->makeRoom();
    expectASearchThatWorks();
    EXPECT_EQ(errors(), threeTimes(WriteError));
    stopService();
    EXPECT_EQ(service->errors(), "");
}

TEST_F(AFullDisk, CostsThePicturesThatItHasNoRoomFor)
{
    start();
    putPicturesOn(Roomy);
    disk->fill(pictureBytes("/p/whole.png").size() * 3 / 2);

    EXPECT_EQ(ui->confirm(searchForThree()), "");

    const Picture picture = ui->nextPicture();
    EXPECT_EQ(picture.index, "0");
    EXPECT_TRUE(contentOf(picture.path) == pictureBytes("/p/whole.png"));
    expectNoMorePictures();
    EXPECT_EQ(errors(), (Texts{WriteError, lost(1), WriteError, lost(2)}));
    disk->makeRoom();
    expectASearchThatWorks();
}

TEST_F(AFullDisk, IsWellAgainForTheNextPictureOfTheSameSearch)
{
    start();
    putPicturesOn(Roomy);
    disk->fill();
    merchant->hold("/p/oat.jpg");
    stock(threeProducts());
    search();
    EXPECT_EQ(ui->confirm(resultMessage()), "");
    ASSERT_TRUE(merchant->waitForRequests("/p/oat.jpg"));

    disk->makeRoom();
    merchant->release("/p/oat.jpg");

    for (const char* index : {"1", "2"}) {
        const Picture picture = ui->nextPicture();
        EXPECT_EQ(picture.index, index);
        EXPECT_GT(contentOf(picture.path).size(), 100'000U);
    }
    EXPECT_EQ(errors(), (Texts{WriteError, lost(0)}));
}

// What a picture smaller than a buffer holds reaches the disk when the transfer is over and well.
TEST_F(AFullDisk, IsNotNoticedByAPictureThatFitsIntoABuffer)
{
    start();
    putPicturesOn(Roomy);
    disk->fill();
    stock({{"Milk", "/p/small.png"}});
    merchant->answer("/p/small.png", {200, std::string(1000, 'x'), "image/png"});

    search();
    ui->confirm(resultMessage());

    const Picture picture = ui->nextPicture();
    EXPECT_EQ(picture.path, picturesFolder() + "/1.png");
    EXPECT_EQ(contentOf(picture.path), "");
    EXPECT_EQ(errors(), Texts{});
    disk->makeRoom();
    expectASearchThatWorks();
}

TEST_F(AFullDisk, ThatTakesNoMoreFilesCostsThePictures)
{
    start();
    putPicturesOn(Roomy, 2);

    searchWithoutPictures();

    EXPECT_EQ(errors(), threeTimes(OpenError));
    disk.reset();
    expectASearchThatWorks();
}

TEST_F(AFullDisk, KeepsTheStatusRecordAndTheSettingAsTheyWere)
{
    putEverythingOn(Roomy);
    start();
    expectASearchThatWorks();
    merchant->answer(Merchant::SearchPath, {401});
    merchant->hold(Merchant::SearchPath);
    search();
    ASSERT_TRUE(merchant->waitForRequests(Merchant::SearchPath, 2));

    disk->fill();  // now, as the search has just removed the pictures of the one before
    merchant->release(Merchant::SearchPath);
    EXPECT_EQ(textOf(resultMessage(), "key_total_num_of_products"), "0");

    EXPECT_EQ(errors(), (Texts{"searchProduct: Not logged in", StatusError, SettingError}));
    EXPECT_EQ(status(), (StatusRecord{1, 1, 3, {}, {}}));
    EXPECT_EQ(responseFlag(), "1\n");
    EXPECT_EQ(filesOf("vconf/db/nuvex/e-commerce"), Texts{"response"}) << "no unfinished file stays";
    disk->makeRoom();
    search();
    resultMessage();
    EXPECT_EQ(status(), (StatusRecord{0, 0, 0, {}, {}}));
    EXPECT_EQ(errors().size(), 4U) << "the login's only";
    expectASearchThatWorks();
}

TEST_F(AFullDisk, AtTheStartIsNoReasonNotToStart)
{
    putEverythingOn(Roomy);
    disk->fill();
    start();

    searchWithoutPictures();

    Texts expected = threeTimes(WriteError);
    const Texts told = errors();
    EXPECT_EQ(std::count(told.begin(), told.end(), StatusError), 1);
    EXPECT_EQ(std::count(told.begin(), told.end(), SettingError), 1);
    EXPECT_EQ(std::count(told.begin(), told.end(), WriteError), 3);
    EXPECT_EQ(status(), std::nullopt);
    disk->makeRoom();
    expectASearchThatWorks();
}

TEST_F(AFullDisk, TakesNoLogAndNothingElseIsLost)
{
    const std::string folder = root + "/log";
    fs::create_directory(folder);
    disk = std::make_unique<SmallDisk>(folder, Roomy);
    const PlatformLog onDisk(folder + "/platform.log");
    ui = std::make_unique<UiPeer>();
    startService(Until::OnBus, {{"APPLIANCE_DLOG", folder + "/platform.log"}});
    expectASearchThatWorks();
    const std::size_t before = onDisk.lines().size();
    disk->fill();

    for (int i = 0; i < 40; ++i)
        resultMessage();
    expectASearchThatWorks();
    expectASearchThatWorks();
    const std::size_t full = onDisk.lines().size();

    disk->makeRoom();
    expectASearchThatWorks();
    stopService();
    EXPECT_GT(before, 0U);
    EXPECT_LT(full, before + 60) << "that much fitted into the last page";
    EXPECT_GT(onDisk.lines().size(), full);
    EXPECT_EQ(onDisk.lines().back().message, "") << "deinitVoiceControl";
    EXPECT_EQ(onDisk.lines().back().function, "deinitVoiceControl");
    EXPECT_EQ(service->errors(), "");
}

TEST_F(AFullDisk, ThatIsReadOnlyIsAsGoodAsAFullOne)
{
    putEverythingOn(Roomy);
    start();
    expectASearchThatWorks();
    disk->makeReadOnly();

    searchWithoutPictures();

    Texts told = errors();
    EXPECT_EQ(std::count(told.begin(), told.end(), StatusError), 1);
    EXPECT_EQ(std::count(told.begin(), told.end(), SettingError), 1);
    EXPECT_EQ(std::count(told.begin(), told.end(), OpenError), 3);
    EXPECT_EQ(told.size(), 8U) << "and each picture is lost";
    EXPECT_EQ(pictureFiles().size(), 3U) << "of the search before, whom nobody is told of";
    disk->makeWritable();
    expectASearchThatWorks();
    EXPECT_EQ(errors().size(), 8U);
}

TEST_F(AFullDisk, ThatIsReadOnlyFromTheStartIsNoReasonNotToStart)
{
    putEverythingOn(Roomy);
    disk->makeReadOnly();
    start();

    searchWithoutPictures();

    EXPECT_EQ(status(), std::nullopt);
    EXPECT_EQ(responseFlag(), "");
    disk->makeWritable();
    fs::create_directory(root + "/media");
    expectASearchThatWorks();
    stopService();
}

// The session of a whole appliance lies there, too.
TEST_F(AFullDisk, KeepsAnApplianceFromComingUpUntilThereIsRoom)
{
    const Texts up = {APPLIANCE_TOOL, "up", "--root", root};
    putEverythingOn(Roomy);
    disk->fill();
    TestSupport::ChildProcess early(up);
    expectEnd(early, 1);
    EXPECT_EQ(early.errors().rfind("appliance: cannot write " + root, 0), 0U) << early.errors();
    EXPECT_FALSE(fs::exists(root + "/session.json"));

    disk->makeRoom();
    TestSupport::ChildProcess late(up);
    EXPECT_TRUE(late.waitForOutput("The appliance is up")) << late.errors();
    disk->fill();
    TestSupport::ChildProcess status({APPLIANCE_TOOL, "status", "--root", root});
    expectEnd(status, 0);
    late.signal(SIGTERM);
    expectEnd(late, 0);
}

// Without any rights: files may not grow beyond a limit.

class ALimitOfFiles : public ADisk {
  protected:
    void SetUp() override
    {
        // The service inherits it: what does not fit is an error like any other.
        before_ = signal(SIGXFSZ, SIG_IGN);
        start();
    }

    void TearDown() override
    {
        ServiceWorld::TearDown();
        signal(SIGXFSZ, before_);
    }

    void limitTo(rlim_t bytes)
    {
        const rlimit limit{bytes, RLIM_INFINITY};
        ASSERT_EQ(prlimit(service->pid(), RLIMIT_FSIZE, &limit, nullptr), 0);
    }

  private:
    sighandler_t before_ = SIG_DFL;
};

TEST_F(ALimitOfFiles, CostsThePicturesThatAreLarger)
{
    limitTo(60'000);

    searchWithoutPictures();

    EXPECT_EQ(errors(), threeTimes(WriteError));
    EXPECT_EQ(status(), (StatusRecord{1, 1, 3, {}, {}}));
    limitTo(RLIM_INFINITY);
    expectASearchThatWorks();
}

TEST_F(ALimitOfFiles, OfNoughtKeepsTheStatusRecordAndTheSettingAsTheyWere)
{
    expectASearchThatWorks();
    limitTo(0);

    merchant->answer(Merchant::SearchPath, {401});
    search();
    EXPECT_EQ(textOf(resultMessage(), "key_total_num_of_products"), "0");

    EXPECT_EQ(status(), (StatusRecord{1, 1, 3, {}, {}}));
    EXPECT_EQ(responseFlag(), "1\n");
    limitTo(RLIM_INFINITY);
    search();
    resultMessage();
    EXPECT_EQ(status(), (StatusRecord{0, 0, 0, {}, {}}));
    expectASearchThatWorks();
}

// Something else in place of the image directory.

using Replacing = std::function<void(const fs::path& folder, const OtherFolder& other)>;

struct Replacement {
    const char* name;
    Replacing replace;
};

std::ostream& operator<<(std::ostream& stream, const Replacement& replacement)
{
    return stream << replacement.name;
}

class AnImageDirectory : public ADisk, public testing::WithParamInterface<Replacement> {
  protected:
    void SetUp() override { start(); }

    void replace()
    {
        fs::remove_all(picturesFolder());
        GetParam().replace(picturesFolder(), other);
    }

    OtherFolder other{root + "/albums"};
};

TEST_P(AnImageDirectory, ThatWasReplacedIsThereAgainForTheNextSearchAndWipedAtTheEnd)
{
    replace();
    expectASearchThatWorks();
    EXPECT_TRUE(fs::is_directory(fs::symlink_status(picturesFolder())));
    other.expectUntouched();
    EXPECT_EQ(errors(), Texts{});

    replace();
    stopService();
    EXPECT_FALSE(fs::exists(fs::symlink_status(picturesFolder())));
    other.expectUntouched();
    EXPECT_EQ(service->errors(), "");
}

TEST_P(AnImageDirectory, ThatIsReplacedDuringASearchCostsItsPicturesAndNothingElse)
{
    stock(threeProducts());
    merchant->hold(Merchant::SearchPath);
    search();
    ASSERT_TRUE(merchant->waitForRequests(Merchant::SearchPath));
    replace();
    merchant->release(Merchant::SearchPath);

    EXPECT_EQ(ui->confirm(resultMessage()), "");
    EXPECT_TRUE(waitForThreads(atRest));
    expectNoMorePictures();

    EXPECT_EQ(errors(), threeTimes(OpenError));
    other.expectUntouched();
    expectASearchThatWorks();
    other.expectUntouched();
}

TEST_P(AnImageDirectory, ThatIsReplacedDuringAPictureCostsThoseThatFollow)
{
    stock(threeProducts());
    merchant->hold("/p/whole.png");
    search();
    ASSERT_TRUE(merchant->waitForRequests("/p/whole.png"));
    replace();
    merchant->release("/p/whole.png");

    EXPECT_EQ(ui->confirm(resultMessage()), "");
    EXPECT_EQ(ui->nextPicture().index, "0") << "whose file was open";
    EXPECT_TRUE(waitForThreads(atRest));
    expectNoMorePictures();

    EXPECT_EQ(errors(), (Texts{OpenError, lost(1), OpenError, lost(2)}));
    other.expectUntouched();
    expectASearchThatWorks();
    other.expectUntouched();
}

const Replacement Replacements[] = {
    {"AFile", [](const fs::path& folder, const OtherFolder&) { std::ofstream(folder) << "a file"; }},
    {"ALinkToAFolder", [](const fs::path& folder,
                          const OtherFolder& other) { fs::create_directory_symlink(other.path(), folder); }},
    {"ALinkToAFile", [](const fs::path& folder,
                        const OtherFolder& other) { fs::create_symlink(other.path() / "1.png", folder); }},
    {"ALinkToNowhere",
     [](const fs::path& folder, const OtherFolder&) { fs::create_symlink("nowhere", folder); }},
    {"ALinkToItself", [](const fs::path& folder, const OtherFolder&) { fs::create_symlink(folder, folder); }},
};

INSTANTIATE_TEST_SUITE_P(By, AnImageDirectory, testing::ValuesIn(Replacements),
                         [](const auto& replacement) { return replacement.param.name; });

class APlaceForPictures : public ADisk {
  protected:
    void SetUp() override { start(); }
};

TEST_F(APlaceForPictures, ThatIsALinkIsNotFollowedForAPictureOfThatName)
{
    const OtherFolder other(root + "/albums");
    stock(threeProducts());
    merchant->hold("/p/whole.png");
    search();
    ASSERT_TRUE(merchant->waitForRequests("/p/whole.png"));
    fs::create_symlink(other.path() / "2.jpg", picturesFolder() + "/2.jpg");
    fs::create_directory_symlink(other.path() / "albums", picturesFolder() + "/more");
    merchant->release("/p/whole.png");

    ui->confirm(resultMessage());
    for (const char* index : {"0", "1", "2"})
        EXPECT_EQ(ui->nextPicture().index, index);

    EXPECT_EQ(errors(), Texts{});
    other.expectUntouched();
    stopService();
    other.expectUntouched();
}

TEST_F(APlaceForPictures, ThatIsGoneWithTheFolderAroundItCostsThePicturesUntilThatIsBack)
{
    fs::remove_all(root + "/media");

    searchWithoutPictures();

    EXPECT_EQ(errors(), threeTimes(OpenError));
    fs::create_directory(root + "/media");
    expectASearchThatWorks();
}

}  // namespace

}  // namespace ServiceTest
