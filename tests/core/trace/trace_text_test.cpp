#include <gtest/gtest.h>

#include "hosts/trace/model/trace_text.h"

namespace kel::trace {
namespace {

TEST(TraceText, HostileTextsComeBackOnOneLine) {
    std::u16string everything;
    for (int unit = 0; unit <= 0xFFFF; unit += unit < 0x100 ? 1 : 0x55)
        everything += static_cast<char16_t>(unit);
    const std::u16string texts[] = {everything, u"\"},{\"t\":1}\r\n\u2028\\u0041\\",
                                    u"\xD83D\xDE00 \xDE00\xD83D", std::u16string(2, u'\0')};
    for (const auto& text : texts) {
        const std::string line = toLine({1.5, Shown{"serial1", text, true}});
        EXPECT_EQ(line.find_first_of("\r\n"), line.npos);
        const auto shown = std::get<Shown>(fromLine(line).what);
        EXPECT_EQ(shown.text, text);
        EXPECT_TRUE(shown.isByCaller);
    }
}

TEST(TraceText, EventsComeBack) {
    CallStarted call;
    call.object = "link1";
    call.method = "SendCommand";
    call.in = {u"start", false, -3, Json(), Json::Object{{"bytes", "00ff"}}};
    call.position = {u"deploy.kel", 7};
    call.number = 12;
    call.interfaceName = "IKelCommunicator";
    call.isCompared = false;
    const std::string started = toLine({1.0004, call});
    EXPECT_EQ(started,
              "{\"t\":1.0,\"call\":12,\"object\":\"link1\",\"interface\":\"IKelCommunicator\","
              "\"method\":\"SendCommand\",\"in\":[\"start\",false,-3,null,{\"bytes\":\"00ff\"}],"
              "\"compared\":false,\"file\":\"deploy.kel\",\"line\":7}");
    const CallEnded end{12, 0x80004005, {1, true}, PublishedError{u"gone", u"Link", "{1}"}, 5};
    const std::string ended = toLine({2.1234567, end});
    const std::string piece =
        toLine({7, FilePiece{"recorder1", u"A.DAT", 9, 2, std::string("\0\xFF", 2)}, 2});
    EXPECT_EQ(piece,
              "{\"t\":7.0,\"leaves\":\"A.DAT\",\"object\":\"recorder1\",\"size\":9,\"offset\":2,"
              "\"bytes\":\"00ff\",\"lane\":2}");
    for (const auto& line :
         {started, ended, toLine({3, CallbackStarted{"link1", u"#WAIT\r\n"}}),
          toLine({4, CallbackEnded{1}}), toLine({5, EventFired{"uploader1", 2, -1, {u"a"}, true}}),
          toLine({6, EventAnswered{0x80004001, {true}}}), piece,
          toLine({8, FilePiece{"recorder1", u"B.DAT", 5000000000, 0, "", "c0ffee"}})}) {
        EXPECT_EQ(toLine(fromLine(line)), line);
    }
    EXPECT_NE(ended.find("\"t\":2.123,"), ended.npos);
}

TEST(TraceText, ACrashLosesAtMostTheLastLine) {
    const std::string whole = headerLine("now") + "\n" + toLine({1, CallbackEnded{}}) + "\n";
    for (std::size_t size = 0; size <= whole.size(); ++size) {
        const auto text = whole.substr(0, size);
        if (text.find('\n') == text.npos) {
            EXPECT_THROW(readTrace(text), std::invalid_argument);
        } else {
            EXPECT_EQ(readTrace(text).size(), size == whole.size() ? 1u : 0u);
        }
    }
}

TEST(TraceText, WhatNoCaseFileCanHoldIsRefused) {
    for (const std::string& line :
         {std::string("{\"t\":1,\"received\":\"\xC0\x80\"}"), std::string(100000, '[')}) {
        EXPECT_THROW(readTrace(headerLine("now") + "\n" + line + "\n"), std::invalid_argument);
    }
}

}  // namespace
}  // namespace kel::trace
