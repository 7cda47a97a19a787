#include "dialogs/service/recorder_events.h"

#include "com/text.h"
#include "com/variant.h"

namespace kel::service {
namespace {

enum class RecorderEvent : DISPID {
    StatusText = 1,
    Progress,
    Finished,
    ConfirmReplace,
    FileStarted
};

// What an event brings; it stands there in reverse order.
class RecorderArguments {
public:
    explicit RecorderArguments(const DISPPARAMS& arguments) : arguments_(arguments) {}

    std::wstring text(UINT index) const {
        return std::wstring(com::view(at(index, VT_BSTR).get().bstrVal));
    }
    // Counts of more than 31 bits come in any type that holds them.
    std::uint32_t count(UINT index) const {
        return static_cast<std::uint32_t>(at(index, VT_I8).get().llVal);
    }

private:
    com::Variant at(UINT index, VARTYPE type) const {
        if (index >= arguments_.cArgs) throw com::Error(DISP_E_BADPARAMCOUNT);
        return com::Variant(arguments_.rgvarg[arguments_.cArgs - 1 - index]).convertedTo(type);
    }

    const DISPPARAMS& arguments_;
};

}  // namespace

UINT confirmReplaceMessage() {
    static const UINT message = RegisterWindowMessageW(L"ConfirmFileReplace");
    return message;
}

void RecorderEvents::finalConstruct() {
    com::check(CoCreateFreeThreadedMarshaler(controlling(), &marshaler_));
}

void* RecorderEvents::findInterface(REFIID iid) {
    // No members but its own: to be agile is all that it tells.
    if (iid == DIID__IRecorderAccessEvents || iid == IID_IAgileObject)
        return static_cast<IDispatch*>(this);
    return Object::findInterface(iid);
}

HRESULT RecorderEvents::findElsewhere(REFIID iid, void** result) {
    return iid == IID_IMarshal ? marshaler_->QueryInterface(iid, result) : E_NOINTERFACE;
}

HRESULT RecorderEvents::received(DISPID event, DISPPARAMS* arguments, VARIANT* result) {
    if (!arguments) return E_INVALIDARG;
    if (result) VariantInit(result);
    const RecorderArguments given(*arguments);
    switch (static_cast<RecorderEvent>(event)) {
        case RecorderEvent::StatusText:
            board_->tell([text = given.text(0)](RecorderNews& news) { news.status = text; });
            return S_OK;
        case RecorderEvent::Progress: {
            const RecorderProgress progress{board_->elapsed(), given.count(0), given.count(1)};
            board_->tell([&](RecorderNews& news) { news.progress = progress; });
            return S_OK;
        }
        case RecorderEvent::Finished:
            board_->tell([&](RecorderNews& news) { news.finishedAfter = board_->elapsed(); });
            return S_OK;
        case RecorderEvent::ConfirmReplace: {
            const com::Variant answer(replaces(given.text(0)));
            if (result) *result = answer.get();
            return S_OK;
        }
        case RecorderEvent::FileStarted:
            return S_OK;
        default:
            return DISP_E_MEMBERNOTFOUND;
    }
}

bool RecorderEvents::replaces(const std::wstring& fileName) {
    if (board_->replacesAll) return true;
    // The user is asked on the dialog's thread; without a dialog nothing is replaced.
    const auto answer = static_cast<ReplaceAnswer>(SendMessageW(
        board_->window, confirmReplaceMessage(), 0, reinterpret_cast<LPARAM>(fileName.c_str())));
    if (answer == ReplaceAnswer::YesToAll) board_->replacesAll = true;
    return answer != ReplaceAnswer::No;
}

RecorderConnection::RecorderConnection(const com::ComPtr<IRecorderAccess>& recorder,
                                       std::shared_ptr<RecorderBoard> board) {
    com::ComPtr<IConnectionPointContainer> container;
    com::check(recorder->QueryInterface(IID_PPV_ARGS(&container)), recorder);
    com::check(container->FindConnectionPoint(DIID__IRecorderAccessEvents, &point_), container);
    com::check(
        point_->Advise(com::makeObject<RecorderEvents>(std::move(board))->controlling(), &cookie_),
        point_);
}

}  // namespace kel::service
