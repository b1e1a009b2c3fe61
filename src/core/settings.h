#pragma once
// The thirteen-line settings file "Quorval.ini" and the settings globals.
#include <string>

#include "core/types.h"

namespace modMain {

extern u8 SkipSetup;
extern i16 ScreenWidth;
extern i16 ScreenHeight;
extern u8 ScreenBPP;
extern std::string D3DDeviceGuid;
extern std::string SoundDeviceGuid;
extern u8 Difficulty;
extern std::string PlayerName;
extern u8 ControlDevice;
extern i16 KeyUp;
extern i16 KeyDown;
extern i16 KeyLeft;
extern i16 KeyRight;
extern float ScaleX;  // ScreenWidth / 640
extern float ScaleY;  // ScreenHeight / 480
// A position of the 640 x 480 design in screen pixels, rounded half to even (0 when it
// does not fit 16 bits).
i16 Screen_X(double design);
i16 Screen_Y(double design);

// Reads the file, or logs its absence and takes the defaults. A line that is missing or
// out of range for its setting leaves that setting as it was.
void Read_Settings();
void Default_Settings();
// Writes all thirteen lines, replacing the file as one step: a crash during the save leaves
// the whole old file or the whole new one (the scale factors are not recomputed).
void Write_Settings();
std::string Settings_Path();

}  // namespace modMain
