#include "tests/wine/link/recorder_test.h"

#include "bench/instrument/card.h"
#include "tests/wine/support/refusals.h"

namespace kel::bench::test {
namespace {

TEST_F(RecorderTest, TheCardIsListed) {
    connectTo(CardKind::kUsual);
    EXPECT_EQ(get(access, &IRecorderAccess::get_CardPresent), VARIANT_TRUE);
    EXPECT_EQ(get(access, &IRecorderAccess::get_Rate), 57600);
    EXPECT_EQ(access->SetRate(9600), S_OK);
    EXPECT_EQ(get(access, &IRecorderAccess::get_Rate), 9600);
    EXPECT_EQ(access->SetRate(9601), E_FAIL);
    EXPECT_EQ(kel::test::takeError()->description, L"The instrument refuses: bad rate");
    const auto files = listing();
    ASSERT_EQ(countOf(files), 5);
    const auto file = fileAt(files, 1);
    EXPECT_EQ(nameOf(file), L"DAY002.DAT");
    EXPECT_EQ(get(file, &IRecorderFile::get_Size), 8192);
    EXPECT_DOUBLE_EQ(get(file, &IRecorderFile::get_Time), 45323 + 1 / 24.0) << "2024/02/01 01:00";
    EXPECT_EQ(access->SelectFile(Bstr(L"DAY002.DAT").get()), S_OK);
    EXPECT_EQ(access->SelectFile(Bstr(L"DAY009.DAT").get()), E_INVALIDARG);
    kel::test::expectNullPointersRefused(access.Get());
    kel::test::expectNullPointersRefused(file.Get());

    connectTo(CardKind::kMany);
    const auto many = listing();
    EXPECT_EQ(countOf(many), 10000);
    EXPECT_EQ(nameOf(fileAt(many, 9999)), L"F9999.DAT");

    connectTo(CardKind::kLarge);
    EXPECT_EQ(get(fileAt(listing(), 0), &IRecorderFile::get_Size), 5'368'709'120);
    LONGLONG used = 0, capacity = 0;
    EXPECT_EQ(access->CardSpace(&used, &capacity), S_OK);
    EXPECT_EQ(used, 5'368'709'130);
    EXPECT_EQ(capacity, 8'589'934'592);

    connectTo(CardKind::kNone);
    EXPECT_EQ(get(access, &IRecorderAccess::get_CardPresent), VARIANT_FALSE);
    EXPECT_EQ(access->CardSpace(&used, &capacity), E_FAIL);
}

TEST_F(RecorderTest, FilesArriveAsTheyAre) {
    connectTo(CardKind::kUsual);
    const auto files = listing();
    long shownWhile = 1;
    sink->onEvent = [&](DISPID member) {
        EXPECT_EQ(isRunning(), member != 3);
        if (member == 3) return S_OK;
        return stream->get_EchoWindow(&shownWhile);
    };
    EXPECT_TRUE(download(files));
    EXPECT_EQ(shownWhile, 0);
    EXPECT_EQ(echoWindow(), window.number());
    EXPECT_FALSE(isRunning());
    const Card card(CardKind::kUsual);
    EXPECT_EQ(folder.names().size(), card.files().size());
    for (const CardFile& file : card.files()) {
        EXPECT_TRUE(folder.content(com::widen(file.name)) ==
                    cardContent(file, 0, static_cast<std::size_t>(file.size)))
            << file.name;
    }
    EXPECT_TRUE(
        sink->events.starts_with("2 0 32290\n5 DAY001.DAT\n1 Reading DAY001.DAT...\n2 4096 "));
    EXPECT_TRUE(sink->events.ends_with("2 32290 32290\n1 The download is complete\n3\n"));
}

TEST_F(RecorderTest, AnExistingFileIsReplacedOnlyWhenThatIsConfirmed) {
    const CardFile last{"SAME.DAT", 300, {}};
    for (const bool replaces : {false, true}) {
        connectTo(CardKind::kClash);
        sink->answer = replaces;
        folder.file(L"SAME.DAT", "mine");
        EXPECT_TRUE(download(listing()));
        EXPECT_EQ(folder.names().size(), 1u);
        EXPECT_EQ(folder.content(L"SAME.DAT"), replaces ? cardContent(last, 0, 300) : "mine");
        EXPECT_NE(sink->events.find("\n4 SAME.DAT\n"), std::string::npos);
        EXPECT_NE(sink->events.find("\n4 same.dat\n"), std::string::npos);
    }
}

TEST_F(RecorderTest, NoNameLeavesTheFolder) {
    connectTo(CardKind::kHostile);
    EXPECT_FALSE(download(listing()));
    EXPECT_EQ(folder.names(), (std::vector<std::wstring>{L"GOOD.DAT", L"LAST.DAT"}));
    EXPECT_EQ(GetFileAttributesW((folder.path() + L"\\..\\x").c_str()), INVALID_FILE_ATTRIBUTES);
    EXPECT_NE(sink->events.find("1 No file can be named '..\\x'\n"), std::string::npos);

    connectTo(CardKind::kUsual);
    VARIANT_BOOL result = VARIANT_TRUE;
    const auto files = listing();
    const Bstr missing(folder.path() + L"\\missing");
    EXPECT_EQ(access->Download(files.Get(), missing.get(), &result), S_OK);
    EXPECT_EQ(result, VARIANT_FALSE);
    EXPECT_NE(sink->events.find("missing\\' cannot be written: error "), std::string::npos);
    files->Add(com::Variant(5L).get());
    EXPECT_EQ(access->Download(files.Get(), Bstr(folder.path()).get(), &result), E_INVALIDARG);
    EXPECT_EQ(echoWindow(), window.number());
}

TEST_F(RecorderTest, AnAbortedDownloadLeavesNothing) {
    for (int n = 1; n <= 8; ++n) {
        SCOPED_TRACE(n);
        connectTo(CardKind::kLarge, 1000, L"5");
        std::atomic<int> events = 0;
        sink->onEvent = [&](DISPID) { return ++events, S_OK; };
        meanwhile = [&] {
            if (events >= n) access->Abort();
        };
        EXPECT_FALSE(download(listing()));
        EXPECT_TRUE(sink->events.ends_with("1 The download was aborted\n3\n"));
        EXPECT_TRUE(folder.names().empty());
        EXPECT_EQ(echoWindow(), window.number());
        EXPECT_TRUE(tell(L"set rate 4"));
    }
    // Also while nothing comes, and by the answer to a question.
    InstrumentOptions slow;
    slow.slow = std::chrono::hours(1);
    connect(slow, 1);
    attach();
    meanwhile = [&] {
        if (isRunning()) access->Abort();
    };
    EXPECT_FALSE(format());
    meanwhile = nullptr;
    window.post([&] { access->Abort(); });
    ComPtr<ICollection> files;
    EXPECT_EQ(access->ReadListing(&files), E_ABORT);
    connectTo(CardKind::kUsual);
    folder.file(L"DAY001.DAT", "mine");
    sink->answer = true;
    sink->onEvent = [&](DISPID member) { return member == 4 ? access->Abort() : S_OK; };
    EXPECT_FALSE(download(listing()));
    EXPECT_EQ(folder.content(L"DAY001.DAT"), "mine");
}

TEST_F(RecorderTest, AFormatEmptiesTheCardOrIsAborted) {
    LONGLONG used = 0, capacity = 0;
    for (const bool aborts : {true, false}) {
        connectTo(CardKind::kUsual, aborts ? 1 : 50);
        EXPECT_EQ(access->CardSpace(&used, &capacity), S_OK);
        meanwhile = [&] {
            if (!isRunning()) return;
            EXPECT_EQ(access->CardSpace(&used, &capacity), S_OK) << "from memory";
            ComPtr<ICollection> files;
            const HRESULT code = access->ReadListing(&files);
            EXPECT_TRUE(code == HRESULT_FROM_WIN32(ERROR_BUSY) || !isRunning());
            if (aborts) access->Abort();
        };
        EXPECT_EQ(format(), !aborts);
        meanwhile = nullptr;
        EXPECT_EQ(countOf(listing()), aborts ? 5 : 0);
        EXPECT_TRUE(sink->events.ends_with(aborts ? "1 The format was aborted\n3\n"
                                                  : "1 The format is complete\n3\n"));
    }
    EXPECT_EQ(access->CardSpace(&used, &capacity), S_OK);
    EXPECT_EQ(used, 0);
}

// It is asked for again, or not kept.
TEST_F(RecorderTest, NoDamagedFileIsKept) {
    const Card card(CardKind::kUsual);
    int complete = 0;
    for (std::uint32_t seed = 1; seed <= 6; ++seed) {
        InstrumentOptions options;
        options.garbleRate = 1e-4;
        options.seed = seed;
        connect(options, 1000, L"10");
        attach();
        sink->answer = true;
        if (const auto files = listing()) complete += download(files);
        for (const CardFile& file : card.files()) {
            const auto content = folder.content(com::widen(file.name));
            EXPECT_TRUE(content == "none" ||
                        content == cardContent(file, 0, static_cast<std::size_t>(file.size)))
                << file.name;
        }
    }
    EXPECT_GT(complete, 0);
}

TEST_F(RecorderTest, TheLastReferenceMayGoOnAnyThread) {
    connectTo(CardKind::kUsual);
    onWorker([&](const ComPtr<IRecorderAccess>& there) {
        access.Reset();
        link.Reset();
        EXPECT_EQ(get(there, &IRecorderAccess::get_CardPresent), VARIANT_TRUE)
            << "it keeps its link";
    });
    EXPECT_TRUE(com::runWaitingMessages());
}

}  // namespace
}  // namespace kel::bench::test
