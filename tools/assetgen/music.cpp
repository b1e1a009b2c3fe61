// The race music "Sm/ASounds.raw": a 56-second loop in A minor at about 137 beats a
// minute, 22050 Hz 16-bit mono RIFF WAVE. Four-on-the-floor drums, an eighth-note bass,
// a soft pad, a lead melody with echo and an arpeggio, in four eight-bar sections.
// Every voice is rendered onto a circular timeline, so tails and echoes of the last bar
// ring on into the first and the loop has no seam.
#include <algorithm>
#include <cmath>
#include <cstdint>
#include <string>
#include <vector>

#include "assetgen.h"

namespace assetgen {
namespace {

constexpr int kRate = 22050;
// A sixteenth note. 512 of them make the loop; the length is chosen so that the game's
// one-second stream buffers leave only 368 samples of silence at the loop point.
constexpr int kStep = 2411;
constexpr int kStepsPerBar = 16;
constexpr int kBars = 32;
constexpr int kLength = kStep * kStepsPerBar * kBars;
constexpr double kPi = 3.14159265358979323846;

using Track = std::vector<float>;

double Midi_Hz(int note) { return 440.0 * std::pow(2.0, (note - 69) / 12.0); }

void Add(Track& t, long at, float v) { t[size_t(((at % kLength) + kLength) % kLength)] += v; }

// The one noise source: a fixed linear congruential sequence in [-1, 1).
struct Noise {
  uint32_t state = 0x1234567u;
  float Next() {
    state = state * 1664525u + 1013904223u;
    return float(state >> 8) / float(1 << 23) - 1.0f;
  }
};

// Band-limited saw-like tone from its first harmonics, each softened by `roll`.
double Additive(double phase, double hz, int harmonics, double roll) {
  double v = 0;
  for (int k = 1; k <= harmonics && hz * k < kRate * 0.42; ++k) v += std::sin(phase * k) / std::pow(k, roll);
  return v;
}

void Kick(Track& t, long at, float gain) {
  double phase = 0;
  for (int i = 0; i < kRate * 35 / 100; ++i) {
    const double s = double(i) / kRate;
    const double hz = 45.0 + 80.0 * std::exp(-s * 28.0);
    phase += 2 * kPi * hz / kRate;
    const double env = std::exp(-s * 9.0) * std::min(1.0, i / 40.0);
    Add(t, at + i, float(gain * env * std::sin(phase)));
  }
}

void Clap(Track& t, long at, float gain, Noise& noise) {
  float low = 0;
  for (int i = 0; i < kRate / 5; ++i) {
    const double s = double(i) / kRate;
    // A band of noise (the difference of a slow follower and the noise) and a short tone.
    const float n = noise.Next();
    low += 0.25f * (n - low);
    const double env = std::exp(-s * 22.0);
    const double tone = std::sin(2 * kPi * 185.0 * s) * std::exp(-s * 40.0);
    Add(t, at + i, float(gain * (env * (n - low) * 0.8 + tone * 0.5)));
  }
}

void Hat(Track& t, long at, float gain, double decay, Noise& noise) {
  float prev = 0;
  for (int i = 0; i < kRate / 12; ++i) {
    const float n = noise.Next();
    const float high = n - prev;  // first difference: only the top of the spectrum
    prev = n;
    Add(t, at + i, float(gain * high * 0.5 * std::exp(-double(i) / kRate * decay)));
  }
}

// A tone with attack, decay to sustain and release after `steps` sixteenths.
void Tone(Track& t, long at, int steps, int note, float gain, int harmonics, double roll, double attack, double release,
          double vibrato) {
  const double hz = Midi_Hz(note);
  const int held = steps * kStep;
  const int total = held + int(release * kRate);
  double phase = 0;
  for (int i = 0; i < total; ++i) {
    const double s = double(i) / kRate;
    const double vib = vibrato * std::min(1.0, s * 3.0) * std::sin(2 * kPi * 5.5 * s);
    phase += 2 * kPi * hz * (1.0 + vib) / kRate;
    double env = std::min(1.0, s / attack);
    env *= 0.65 + 0.35 * std::exp(-s * 6.0);
    if (i >= held) env *= std::exp(-double(i - held) / kRate * (5.0 / release));
    Add(t, at + i, float(gain * env * Additive(phase, hz, harmonics, roll)));
  }
}

struct Note {
  int step, length, midi;
};

// Two four-bar phrases over Am, F, C, G; steps count sixteenths from the phrase start.
const std::vector<Note> kPhraseA = {
    {0, 3, 69},  {3, 1, 72},  {4, 2, 76},  {6, 2, 81},  {8, 4, 79},  {12, 2, 76}, {14, 2, 72}, {16, 3, 77}, {19, 1, 76},
    {20, 2, 72}, {22, 2, 69}, {24, 6, 72}, {30, 2, 74}, {32, 3, 76}, {35, 1, 79}, {36, 2, 84}, {38, 2, 79}, {40, 4, 76},
    {44, 2, 74}, {46, 2, 72}, {48, 4, 74}, {52, 2, 71}, {54, 2, 67}, {56, 6, 71}, {62, 2, 74}};
const std::vector<Note> kPhraseB = {{0, 2, 76},  {2, 2, 81},  {4, 2, 84},  {6, 2, 83},  {8, 6, 81},  {14, 2, 76},
                                    {16, 2, 77}, {18, 2, 81}, {20, 2, 84}, {22, 2, 81}, {24, 4, 77}, {28, 4, 81},
                                    {32, 2, 79}, {34, 2, 84}, {36, 2, 88}, {38, 2, 86}, {40, 6, 84}, {46, 2, 79},
                                    {48, 3, 83}, {51, 3, 86}, {54, 2, 83}, {56, 8, 79}};

// Root (bass octave) and the chord's three notes, bar by bar of the four-bar cycle.
const int kRoots[4] = {45, 41, 48, 43};  // A2 F2 C3 G2
const int kChords[4][3] = {{57, 60, 64}, {53, 57, 60}, {55, 60, 64}, {55, 59, 62}};

long Step_At(int bar, int step) { return (long(bar) * kStepsPerBar + step) * kStep; }

std::vector<int16_t> Render() {
  Track drums(kLength, 0.0f), bass(kLength, 0.0f), pad(kLength, 0.0f), lead(kLength, 0.0f), arp(kLength, 0.0f);
  Noise noise;
  for (int bar = 0; bar < kBars; ++bar) {
    const int section = bar / 8;
    const int chord = bar % 4;
    for (int beat = 0; beat < 4; ++beat) Kick(drums, Step_At(bar, beat * 4), 0.8f);
    if (bar >= 4 || section > 0) {
      Clap(drums, Step_At(bar, 4), 0.42f, noise);
      Clap(drums, Step_At(bar, 12), 0.42f, noise);
    }
    for (int s = 0; s < kStepsPerBar; ++s) {
      const bool off_beat = s % 4 == 2;
      if (off_beat)
        Hat(drums, Step_At(bar, s), 0.30f, 28.0, noise);
      else if (section >= 2 && s % 2 == 1)
        Hat(drums, Step_At(bar, s), 0.14f, 60.0, noise);
    }
    if (bar == kBars - 1)  // a fill into the loop point
      for (int s = 8; s < 16; s += 1) Clap(drums, Step_At(bar, s), 0.16f + 0.025f * float(s - 8), noise);

    // Bass: eighth notes on the root with an octave lift and a fifth.
    const int pattern[8] = {0, 0, 12, 0, 0, 0, 12, 7};
    for (int e = 0; e < 8; ++e)
      Tone(bass, Step_At(bar, e * 2), 2, kRoots[chord] + pattern[e], 0.30f, 10, 1.25, 0.004, 0.05, 0.0);

    if (section == 0 && bar < 4) continue;
    for (int n = 0; n < 3; ++n) Tone(pad, Step_At(bar, 0), 15, kChords[chord][n], 0.055f, 4, 1.6, 0.25, 0.35, 0.004);
    if (section >= 2)
      for (int s = 0; s < kStepsPerBar; ++s)
        Tone(arp, Step_At(bar, s), 1, kChords[chord][s % 3] + 12 * (1 + (s / 3) % 2), 0.05f, 6, 1.4, 0.003, 0.06, 0.0);
  }
  // The lead: phrase A twice, B twice, then A and B.
  const std::vector<const std::vector<Note>*> phrases = {&kPhraseA, &kPhraseA, &kPhraseB,
                                                         &kPhraseB, &kPhraseA, &kPhraseB};
  for (size_t p = 0; p < phrases.size(); ++p)
    for (const Note& n : *phrases[p])
      Tone(lead, Step_At(8 + int(p) * 4, n.step), n.length, n.midi, 0.2f, 7, 1.3, 0.012, 0.12, 0.006);

  // A dotted-eighth echo on the lead, run twice round the loop so its tail wraps too.
  Track echo(kLength, 0.0f);
  const int delay = kStep * 3;
  for (int pass = 0; pass < 2; ++pass)
    for (int i = 0; i < kLength; ++i) {
      const int from = (i - delay + kLength) % kLength;
      echo[size_t(i)] = 0.45f * (lead[size_t(from)] + echo[size_t(from)]);
    }

  std::vector<double> mix(kLength);
  for (int i = 0; i < kLength; ++i)
    mix[size_t(i)] =
        drums[size_t(i)] + bass[size_t(i)] + pad[size_t(i)] + lead[size_t(i)] + 0.6 * echo[size_t(i)] + arp[size_t(i)];
  // Gentle saturation, then the peak scaled to 85 % of full range.
  double peak = 1e-9;
  for (double& v : mix) {
    v = std::tanh(v * 0.9);
    peak = std::max(peak, std::fabs(v));
  }
  std::vector<int16_t> out(kLength);
  for (int i = 0; i < kLength; ++i) out[size_t(i)] = int16_t(std::lround(mix[size_t(i)] / peak * 0.85 * 32767.0));
  return out;
}

void Put16(std::string& s, uint32_t v) {
  s += char(v & 0xFF);
  s += char((v >> 8) & 0xFF);
}
void Put32(std::string& s, uint32_t v) {
  Put16(s, v & 0xFFFF);
  Put16(s, v >> 16);
}

bool Write_Music(const std::string& game_dir) {
  const std::vector<int16_t> samples = Render();
  const uint32_t data_bytes = uint32_t(samples.size() * 2);
  std::string f = "RIFF";
  Put32(f, 36 + data_bytes);
  f += "WAVEfmt ";
  Put32(f, 16);
  Put16(f, 1);  // PCM
  Put16(f, 1);  // mono
  Put32(f, kRate);
  Put32(f, kRate * 2);
  Put16(f, 2);
  Put16(f, 16);
  f += "data";
  Put32(f, data_bytes);
  for (int16_t s : samples) Put16(f, uint16_t(s));
  return Write_File(game_dir + "/Sm/ASounds.raw", f);
}

const bool registered = Register("music", Write_Music);
}  // namespace
}  // namespace assetgen
