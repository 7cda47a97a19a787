#include <filesystem>
#include <regex>

#include "com/passed.h"
#include "com/text.h"
#include "hosts/shared/activation_context.h"
#include "hosts/shared/library_contents.h"
#include "interfaces/KelUtils.h"
#include "tests/support/temporary_file.h"
#include "tests/wine/server/library_classes.h"
#include "tests/wine/support/dialog_driver.h"
#include "tests/wine/support/registry_sandbox.h"
#include "tests/wine/support/temporary_folder.h"

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
        folder_.file(L"KelUtils.dll", TemporaryFile::bytesOf(kelUtils().path()));
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
        EXPECT_EQ(kelUtils().canUnloadNow(), S_OK) << "it is of the other library";
        ComPtr<ITypeInfo> type;
        com::check(object->GetClassInfo(&type));
        return attributesOf(type.Get()).guid;
    }

    TemporaryFolder folder_;
    std::wstring manifest_;
    std::unique_ptr<host::ActivationContext> context_;
};

TEST_F(Manifest, MakesEveryClassByIdentifierAndName) {
    CLSID found;
    EXPECT_NE(CLSIDFromProgID(L"Bare.Preprocessor", &found), S_OK);
    EXPECT_FALSE(host::manifestOf(CLSID_Preprocessor));
    activate();
    for (const LibraryClass& each : libraryClasses()) {
        if (!each.isCreatable) continue;
        SCOPED_TRACE(each.name);
        const CLSID made = each.refusal.empty() ? each.identifier : GUID_NULL;
        const std::string name = "Bare." + (each.name == "HTMLWindow" ? "HTMLDialog" : each.name);
        EXPECT_EQ(host::manifestOf(each.identifier), manifest_);
        EXPECT_EQ(create(each.identifier), made);
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

TEST(ManifestText, NamesEveryInterface) {
    std::string text = std::regex_replace(manifestText(), std::regex("\\s+"), " ");
    for (const host::RegisteredInterface& each : host::kelUtilsLibrary().interfaces) {
        const std::string element = std::string("<comInterfaceExternalProxyStub name=\"") +
                                    each.name + "\" iid=\"" + each.identifier + "\" tlbid=\"" +
                                    toText(LIBID_KELUTILSLib) + "\" proxyStubClsid32=\"" +
                                    each.marshaller + "\"/>";
        const std::size_t at = text.find(element);
        ASSERT_NE(at, text.npos) << element;
        text.erase(at, element.size());
    }
    EXPECT_EQ(text.find("comInterface"), text.npos) << text;
}

}  // namespace
}  // namespace kel::test
