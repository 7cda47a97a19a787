#include <gtest/gtest.h>

#include <limits>

#include "hosts/trace/model/speed.h"
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
    for (const auto& line : {started, ended, toLine({3, CallbackStarted{"link1", u"#WAIT\r\n"}}),
                             toLine({4, CallbackEnded{1}})}) {
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

TEST(TraceText, OtherFilesAreRefusedWithTheLine) {
    const std::string header = headerLine("now") + "\n";
    const std::string deep(100000, '[');
    const std::pair<std::string, std::string> cases[] = {
        {"#WAIT 3\n", "Line 1: Not JSON"},
        {"{\"format\":\"other\",\"version\":1}\n", "Line 1: This is no trace"},
        {"{\"format\":\"kel-trace\",\"version\":2}\n", "Line 1: The trace has a version"},
        {header + "{\"t\":1,\"call\":1}\n", "Line 2: 'object' is missing"},
        {header + "{\"t\":\"1\",\"scriptEnd\":\"0x1\"}\n", "Line 2: Not a number"},
        {header + "{\"t\":1,\"scriptEnd\":\"0xZ\"}\n", "Line 2: A result code"},
        {header + "{\"t\":1} x\n", "Line 2: Not JSON: something follows"},
        {header + "{\"t\":99999999999999999999}\n", "Line 2: Not JSON: a bad number"},
        {header + "{\"t\":1,\"received\":\"\\u12g4\"}\n", "Line 2: Not JSON: a bad escape"},
        {header + "{\"t\":1,\"received\":\"\xC0\x80\"}\n", "Line 2: The text is not UTF-8"},
        {header + deep + "\n", "Line 2: Not JSON: it is nested too deeply"},
    };
    for (const auto& [text, reason] : cases) {
        try {
            readTrace(text);
            ADD_FAILURE() << reason;
        } catch (const std::invalid_argument& error) {
            EXPECT_TRUE(std::string(error.what()).starts_with(reason)) << error.what();
        }
    }
}

TEST(TraceText, SpeedDividesTimes) {
    const double infinity = std::numeric_limits<double>::infinity();
    EXPECT_EQ(atSpeed(500, 1), 500);
    EXPECT_EQ(atSpeed(500, 10), 50);
    EXPECT_EQ(atSpeed(500, 0), 0);
    EXPECT_EQ(atSpeed(500, infinity), 0);
    EXPECT_EQ(atSpeed(-1, 0.5), 0);
    EXPECT_TRUE(isSpeed(infinity));
    EXPECT_FALSE(isSpeed(-1));
    EXPECT_FALSE(isSpeed(std::numeric_limits<double>::quiet_NaN()));
}

}  // namespace
}  // namespace kel::trace
