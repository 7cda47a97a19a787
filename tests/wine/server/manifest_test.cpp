#include <filesystem>
#include <regex>

#include "com/passed.h"
#include "com/text.h"
#include "hosts/shared/activation_context.h"
#include "interfaces/KelUtils.h"
#include "tests/support/temporary_file.h"
#include "tests/wine/server/expected.h"
#include "tests/wine/support/dialog_driver.h"
#include "tests/wine/support/library.h"
#include "tests/wine/support/registry_sandbox.h"
#include "tests/wine/support/temporary_folder.h"
#include "tests/wine/support/type_library.h"

namespace kel::test {
namespace {

using com::ComPtr;

std::string manifestText() {
    return TemporaryFile::bytesOf(
        std::filesystem::path(kelUtils().path()).replace_extension(L".manifest"));
}

// A copy of the library that nothing knows but its manifest. Its ProgIDs begin with Bare, for those
// of the library may stand in the registry.
class Manifest : public testing::Test {
protected:
    Manifest() {
        const std::regex programs("progid(=\"|>)KelUtils\\.");
        const std::string text = std::regex_replace(manifestText(), programs, "progid$1Bare.");
        manifest_ = folder_.file(L"Bare.manifest", text);
        library_ = folder_.file(L"KelUtils.dll", TemporaryFile::bytesOf(kelUtils().path()));
    }
    ~Manifest() override {
        context_.reset();
        CoFreeUnusedLibrariesEx(0, 0);
    }

    void activate() { context_ = std::make_unique<host::ActivationContext>(manifest_); }

    // The class that an object of the copy says to be of; GUID_NULL when the library refuses it.
    CLSID create(REFCLSID identifier) const {
        ComPtr<IProvideClassInfo> object;
        const HRESULT code =
            CoCreateInstance(identifier, nullptr, CLSCTX_INPROC_SERVER, IID_PPV_ARGS(&object));
        EXPECT_EQ(code, object ? S_OK : E_NOTIMPL);
        if (!object) return GUID_NULL;
        HMODULE module = nullptr;
        GetModuleHandleExW(
            GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
            *reinterpret_cast<const wchar_t**>(object.Get()), &module);
        EXPECT_TRUE(module && module == GetModuleHandleW(library_.c_str()));
        ComPtr<ITypeInfo> type;
        com::check(object->GetClassInfo(&type));
        return attributesOf(type.Get()).guid;
    }

    TemporaryFolder folder_;
    std::wstring manifest_;
    std::wstring library_;
    std::unique_ptr<host::ActivationContext> context_;
};

TEST_F(Manifest, MakesEveryClassByIdentifierAndName) {
    CLSID found;
    EXPECT_NE(CLSIDFromProgID(L"Bare.Preprocessor", &found), S_OK);
    EXPECT_FALSE(host::manifestOf(CLSID_Preprocessor));
    activate();
    for (const ExpectedClass& row : expectedClasses()) {
        if (row.registryScript == 0) continue;
        SCOPED_TRACE(row.name);
        const CLSID made = row.isBuilt() ? row.identifier : GUID_NULL;
        const std::string name = "Bare." + (row.name == "HTMLWindow" ? "HTMLDialog" : row.name);
        EXPECT_EQ(host::manifestOf(row.identifier), manifest_);
        EXPECT_EQ(create(row.identifier), made);
        // The system answers with an identifier of its own that stands for the class's.
        for (const std::string& version : {name, name + ".1"}) {
            ASSERT_EQ(CLSIDFromProgID(com::widen(version).c_str(), &found), S_OK) << version;
            EXPECT_EQ(create(found), made) << version;
        }
    }
}

TEST_F(Manifest, MakesTheTypeLibraryKnownAndCarriesCallsFromThreadToThread) {
    const RegistrySandbox nothing(HKEY_CLASSES_ROOT);
    ComPtr<ITypeLib> library;
    EXPECT_NE(LoadRegTypeLib(LIBID_KELUTILSLib, 1, 0, 1033, &library), S_OK);
    activate();
    EXPECT_EQ(LoadRegTypeLib(LIBID_KELUTILSLib, 1, 0, 1033, &library), S_OK);

    ComPtr<IPreprocessorControl> object;
    com::check(
        CoCreateInstance(CLSID_Preprocessor, nullptr, CLSCTX_INPROC_SERVER, IID_PPV_ARGS(&object)));
    const com::Passed<IPreprocessorControl> passed(object);
    DialogDriver other([&](DialogDriver&) {
        const host::ActivationContext context(manifest_);
        CoInitializeEx(nullptr, COINIT_MULTITHREADED);
        com::check(passed.fetch()->put_ScriptName(com::Bstr(L"from there").get()));
        CoUninitialize();
    });
    other.runMessageLoop();
    com::Bstr name;
    EXPECT_EQ(object->get_ScriptName(name.put()), S_OK);
    EXPECT_EQ(name.view(), L"from there");
}

// Each interface of the type library, with the platform's marshaller for its kind.
TEST(ManifestText, NamesEveryInterface) {
    std::set<std::string> expected, found;
    for (const ExpectedInterface& each : expectedInterfaces())
        expected.insert(each.name + " " + each.identifier + " " + toText(LIBID_KELUTILSLib) +
                        (each.isEvents ? " 00020420" : " 00020424"));
    const std::string text = manifestText();
    const std::regex form(
        "<comInterfaceExternalProxyStub name=\"(\\w+)\" iid=\"(\\S+)\"\\s+tlbid=\"(\\S+)\" "
        "proxyStubClsid32=\"\\{(\\d+)-0000-0000-C000-000000000046\\}\"/>");
    for (std::sregex_iterator it(text.begin(), text.end(), form), end; it != end; ++it)
        found.insert(it->format("$1 $2 $3 $4"));
    EXPECT_EQ(joined(found), joined(expected));
}

}  // namespace
}  // namespace kel::test
