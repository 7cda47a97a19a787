#pragma once
// What is said to the instrument about its recorder's card.

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "bench/link/access/dialogue.h"
#include "bench/link/model/card_listing.h"

namespace kel::bench {

// Any thread. Throws NoAnswer also where the instrument refuses, with what it says.
class CardDialogue {
public:
    // Waits throw Aborted when `isAborted` says so.
    CardDialogue(IKelCommunicator* link, const HomeThread& home,
                 std::function<bool()> isAborted = {});

    CardStatus status();
    std::vector<CardEntry> list();

    static constexpr std::int64_t kLongestBlock = 4096;
    // `rate`: bits a second at which the bytes come at least.
    std::string read(std::int64_t file, std::int64_t offset, std::int64_t count, long rate);

    void setRate(long rate);
    void format();

    // Ends what an aborted wait was for.
    void stop();

private:
    std::string ask(const std::string& command, long timeout = Dialogue::kTimeout);

    QuietPort port_;
    Dialogue dialogue_;
};

}  // namespace kel::bench
