#pragma once
// The KelScript component: runs JScript against a host's objects.

#include <memory>
#include <optional>
#include <set>
#include <string>

#include "com/connection_point.h"
#include "com/late_bound.h"
#include "com/object.h"
#include "html/error_sink.h"
#include "html/named_item.h"
#include "html/object_table.h"
#include "interfaces/KelUtils.h"

namespace kel::html {

class KelScript final
    : public com::Object<KelScript, com::Dual<IKelScriptObject2, IKelScriptObject>,
                         com::Plain<IKelScript>, com::Events<&DIID__IKelScriptEvents>>,
      private TableListener {
public:
    static constexpr com::ClassDescription kClass{&CLSID_KelScript, L"KelUtils.KelScript.1"};

    ~KelScript() override;
    void finalConstruct();

    STDMETHODIMP LoadFile(BSTR path, VARIANT_BOOL* success) override;

    // IKelScript and IKelScriptObject2
    STDMETHODIMP get_ScriptControl(IDispatch** control) override;
    STDMETHODIMP put_Objects(IKelObjects* objects) override;
    STDMETHODIMP get_Objects(IKelObjects** objects) override;
    STDMETHODIMP get_Unattended(VARIANT_BOOL* isUnattended) override;
    STDMETHODIMP put_Unattended(VARIANT_BOOL isUnattended) override;
    STDMETHODIMP get_LastError(BSTR* text) override;
    STDMETHODIMP get_LastErrorDescription(BSTR* text) override;
    STDMETHODIMP get_LastErrorLine(long* line) override;
    STDMETHODIMP get_LastErrorColumn(long* column) override;
    STDMETHODIMP ClearLastError() override;

private:
    struct ScriptError {
        std::wstring text;
        std::wstring description;
        long line = 0;
        long column = 0;
    };

    com::LateBound errorObject() const;
    // Takes the control's error over, which stays there. False where the control has none.
    bool takeError();
    void clearError() const;
    // Takes the control's error over, shows it unless nobody is there to see it, and clears it.
    void tellError();
    // The last error, that of a call of the host's own on the control included.
    const ScriptError& lastError();
    void nameAdded(const std::wstring& name) override;
    void adviseSink();
    void leaveTable();

    std::optional<com::LateBound> control_;
    com::ComPtr<ErrorSink> sink_;
    com::ComPtr<IConnectionPoint> point_;
    DWORD cookie_ = 0;
    std::shared_ptr<CurrentTable> table_ = std::make_shared<CurrentTable>();
    std::set<std::wstring> names_;  // those that the control knows
    ScriptError lastError_;
    bool isUnattended_ = false;
};

}  // namespace kel::html
