// Words that hosts install, and the collection in which they receive their parameters.
#include "com/variant.h"
#include "tests/wine/script/preprocessor_fixture.h"

namespace kel::test {
namespace {

using com::Variant;
using ExtensionTest = PreprocessorTest;

// Name and value of every parameter.
std::string told(long number, IFlatCollection* parameters) {
    std::string text = std::to_string(number) + ":";
    long count = 0;
    com::check(parameters->get_Count(&count));
    for (long i = 0; i < count; ++i) {
        com::Bstr name;
        Variant value;
        com::check(parameters->get_Name(i, name.put()));
        com::check(parameters->get_Item(Variant(i).get(), value.put()));
        text.append(" ").append(com::narrow(name.get())).append("=").append(value.toText());
    }
    return text;
}

TEST_F(ExtensionTest, WordsReceiveTheirNumberAndParameters) {
    const auto directive = install(L"Beep");
    const auto function = install(L"Add", true);
    std::vector<std::string> calls;
    directive->onCall = [&](long number, IFlatCollection* parameters) -> Answer {
        calls.push_back(told(number, parameters));
        return {};
    };
    function->onCall = [&](long number, IFlatCollection* parameters) -> Answer {
        calls.push_back(told(number, parameters));
        return {.value = L"sum"};
    };
    EXPECT_TRUE(run("@x=15\n#BEEP x, \"a b\" 3\n#beep\nset ##ADD(x, \"2\")!"));
    EXPECT_EQ(calls, (std::vector<std::string>{"42: 0=15 1=a b 2=3", "42:", "42: 0=15 1=2"}));
    EXPECT_NE(link_.takeWork().find("\"set sum!\""), std::string::npos);
    EXPECT_EQ(preprocessor_->InstallCustomDirective(com::Bstr(L"x").get(), nullptr, 0), E_POINTER);
    EXPECT_EQ(preprocessor_->InstallCustomFunction(com::Bstr(L"x").get(), nullptr, 0), E_POINTER);
}

TEST_F(ExtensionTest, AFailingHandlerEndsTheRunWithItsCodeAndWords) {
    const auto extension = install(L"Beep");
    extension->onCall = [](long, IFlatCollection*) -> Answer {
        return {.code = com::publish(E_ABORT, L"No sound", IID_IPreprocessorExtension, L"Host")};
    };
    VARIANT_BOOL result = VARIANT_TRUE;
    EXPECT_EQ(preprocessor_->PreprocessAndRun(com::Bstr(L"#BEEP\nline").get(), &result), E_ABORT);
    EXPECT_EQ(result, VARIANT_FALSE);
    const auto error = takeError();
    ASSERT_TRUE(error);
    EXPECT_EQ(error->description, L"No sound");
    EXPECT_EQ(error->interfaceId, IID_IPreprocessorExtension);
    EXPECT_EQ(link_.takeWork(), "");
}

TEST_F(ExtensionTest, TheCollectionIsIndexedByPositionAndName) {
    const auto extension = install(L"Look");
    com::ComPtr<IFlatCollection> kept;
    extension->onCall = [&](long, IFlatCollection* parameters) -> Answer {
        kept = parameters;
        return {};
    };
    EXPECT_TRUE(run("#LOOK \"zero\" \"one\""));
    ASSERT_TRUE(kept);
    EXPECT_EQ(kept->Add(com::Bstr(L"Extra").get(), Variant(7L).get()), S_OK);
    EXPECT_EQ(told(0, kept.Get()), "0: 0=zero 1=one Extra=7");
    Variant value;
    for (const auto& [index, text] : {std::pair(Variant(1L), "one"),
                                      {Variant(L"1"), "one"},
                                      {Variant(L"EXTRA"), "7"},
                                      {Variant(1L).convertedTo(VT_R8), "one"}}) {
        EXPECT_EQ(kept->get_Item(index.get(), value.put()), S_OK);
        EXPECT_EQ(value.toText(), text);
    }
    for (const Variant& index : {Variant(3L), Variant(-1L), Variant(L"nobody")}) {
        EXPECT_EQ(kept->get_Item(index.get(), value.put()), DISP_E_BADINDEX);
    }
    com::Bstr name;
    EXPECT_EQ(kept->get_Name(3, name.put()), DISP_E_BADINDEX);
    com::ComPtr<IUnknown> unknown;
    com::ComPtr<IEnumVARIANT> walk;
    EXPECT_EQ(kept->get__NewEnum(&unknown), S_OK);
    ASSERT_EQ(unknown.As(&walk), S_OK);
    EXPECT_EQ(walk->Skip(2), S_OK);
    EXPECT_EQ(walk->Next(1, value.put(), nullptr), S_OK);
    EXPECT_EQ(value.toText(), "7");
}

}  // namespace
}  // namespace kel::test
