#pragma once
// The page of a session with a data file instead of an instrument.

#include "dialogs/connect/session_page.h"
#include "dialogs/connect/session_store.h"
#include "dialogs/connect/session_values.h"

namespace kel::connect {

class OpenFilePage final : public SessionPageOf<Form> {
public:
    // `values` outlives the page.
    OpenFilePage(com::ObjectCore& component, SessionValues& values)
        : SessionPageOf(&component), values_(values) {}

    bool carryOut() override;

protected:
    void initialise() override;
    bool command(int control, int notification) override;
    int statusLine() const override;

private:
    void browse();

    SessionValues& values_;
};

}  // namespace kel::connect
