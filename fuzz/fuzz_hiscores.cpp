// Any bytes given to the hi-score reader: it must never read past them, whatever table it
// reads must write back to bytes that read as the same table, and the texts the screen
// builds from it must be made without fault.
#include <cstddef>
#include <cstdint>
#include <string>

#include "core/hiscore_file.h"
#include "core/numbers.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  modHiScore::HiScoreTable table;
  const int fields = modHiScore::Decode_HiScores(data, size, table);
  if (fields < 0 || fields > 6) __builtin_trap();
  const std::string bytes = modHiScore::Encode_HiScores(table);
  modHiScore::HiScoreTable again;
  if (modHiScore::Decode_HiScores(reinterpret_cast<const uint8_t*>(bytes.data()), bytes.size(), again) != 6)
    __builtin_trap();
  if (!(again == table)) __builtin_trap();
  // A table read whole came from the data's first bytes: writing it back takes no more.
  if (fields == 6 && bytes.size() > size) __builtin_trap();
  volatile size_t sink = modHiScore::Time_Text(table.BestLap).size() + modHiScore::Time_Text(table.BestRace).size() +
                         numbers::Format(table.BestTopSpeed, "000").size();
  (void)sink;
  return 0;
}
