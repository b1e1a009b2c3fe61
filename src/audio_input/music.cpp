#include "audio_input/frmMain.h"

// The music stream is not part of the game yet: these are the entry points start-up and
// shutdown call, and the game runs silently until the stream lands.
namespace frmMain {

void Init_Streaming_Music() {}
void Play_Streaming_Music(const std::string& /*file*/) {}
void Kill_DSound() {}

}  // namespace frmMain
