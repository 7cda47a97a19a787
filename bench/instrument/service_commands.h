#pragma once

#include "bench/instrument/call.h"

namespace kel::bench {

// The commands of the recorder's card, the firmware, the compass and the pressure sensor. Blocks of
// bytes are announced by a line "DATA count crc32" and followed by a line end.

Answer card(Call& call);
Answer cardList(Call& call);
Answer cardRead(Call& call);
Answer cardRate(Call& call);
Answer cardFormat(Call& call);

Answer firmware(Call& call);
Answer firmwareBegin(Call& call);
Answer firmwareWrite(Call& call);
Answer firmwareEnd(Call& call);
Answer firmwareRead(Call& call);

Answer compass(Call& call);
Answer compassCalibrate(Call& call);
Answer compassScores(Call& call);

Answer pressureCollect(Call& call);

}  // namespace kel::bench
