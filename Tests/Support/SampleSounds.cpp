#include "Tests/Support/SampleSounds.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <numbers>

#include "Tests/Support/Canvas.h"

namespace Fixture {

namespace {

constexpr float turn = 2 * std::numbers::pi_v<float>;

// Sums up sounds, each begun at its own time, then made samples of.
class Mixer {
 public:
  Mixer(std::uint32_t samplesPerSecond, float seconds)
      : rate_(static_cast<float>(samplesPerSecond)), samples_(static_cast<std::size_t>(rate_ * seconds)) {}

  // `voice` gives the amplitude at a time since the start.
  template <typename Voice>
  void play(float start, float length, Voice voice) {
    const auto first = static_cast<std::size_t>(start * rate_);
    const auto count = static_cast<std::size_t>(length * rate_);
    for (std::size_t index = 0; index < count && first + index < samples_.size(); ++index) {
      samples_[first + index] += voice(static_cast<float>(index) / rate_);
    }
  }

  Sound sound() const {
    Sound sound{.samplesPerSecond = static_cast<std::uint32_t>(rate_)};
    for (const float sample : samples_) {
      sound.samples.push_back(static_cast<std::int16_t>(std::clamp(sample, -1.0F, 1.0F) * 32'000));
    }
    return sound;
  }

 private:
  float rate_;
  std::vector<float> samples_;
};

// Two resonances of the mouth, in hertz.
using Vowel = std::array<float, 2>;

void say(Mixer& mixer, Vowel vowel, float start, float length, float pitch, float glide) {
  constexpr int harmonics = 14;
  std::array<float, harmonics> loudness{};
  for (int harmonic = 1; harmonic <= harmonics; ++harmonic) {
    const float frequency = pitch * static_cast<float>(harmonic);
    float resonance = 0.04F;
    for (const float formant : vowel) resonance += std::exp(-std::pow((frequency - formant) / 170, 2.0F));
    loudness[static_cast<std::size_t>(harmonic) - 1] = 0.13F * resonance / std::sqrt(static_cast<float>(harmonic));
  }
  mixer.play(start, length, [=](float time) {
    const float envelope = std::pow(std::sin(turn / 2 * time / length), 0.7F);
    const float phase = turn * pitch * (time + glide * time * time / 2) + 0.04F * std::sin(turn * 5 * time);
    float sum = 0;
    for (int harmonic = 1; harmonic <= harmonics; ++harmonic) {
      sum += loudness[static_cast<std::size_t>(harmonic) - 1] * std::sin(phase * static_cast<float>(harmonic));
    }
    return envelope * sum;
  });
}

}  // namespace

Sound babble(SeededRandom& random, float seconds) {
  constexpr std::array<Vowel, 5> vowels = {Vowel{730, 1090}, {530, 1840}, {300, 2200}, {500, 900}, {320, 800}};
  Mixer mixer(16'000, seconds);
  const float voice = between(random, 100, 210);
  float now = 0.15F;
  while (now < seconds - 0.4F) {
    const std::size_t syllables = 2 + random.below(9);
    for (std::size_t done = 0; done < syllables && now < seconds - 0.3F; ++done) {
      const float length = between(random, 0.11F, 0.24F);
      const float fall = 1.12F - 0.25F * static_cast<float>(done) / static_cast<float>(syllables);
      say(mixer, random.pick(vowels), now, length, voice * fall * between(random, 0.95F, 1.06F),
          between(random, -0.5F, 0.4F));
      now += length * between(random, 0.85F, 1.15F) + (random.chance(25) ? 0.07F : 0);
    }
    now += between(random, 0.2F, 0.6F);
  }
  return mixer.sound();
}

Sound melody(SeededRandom& random, float seconds) {
  constexpr std::array<int, 8> scale = {0, 2, 4, 7, 9, 12, 14, 16};
  Mixer mixer(44'100, seconds);
  const float beat = between(random, 0.24F, 0.36F);
  std::size_t step = 2 + random.below(4);
  int count = 0;
  for (float now = 0.1F; now < seconds - 0.5F; now += beat, ++count) {
    step = std::clamp<std::size_t>(step + random.below(5), 2, 9) - 2;
    if (random.chance(15)) continue;
    const float note = 220 * std::pow(2.0F, static_cast<float>(scale[step]) / 12);
    const auto pluck = [](float frequency, float loudness) {
      return [=](float time) {
        const float attack = std::min(time * 120, 1.0F);
        const float body = std::sin(turn * frequency * time) +
                           0.4F * std::exp(-time * 5) * std::sin(turn * 2 * frequency * time) +
                           0.15F * std::exp(-time * 9) * std::sin(turn * 3 * frequency * time);
        return loudness * attack * std::exp(-time * 3.2F) * body;
      };
    };
    mixer.play(now, 1.4F, pluck(note, 0.16F));
    if (count % 4 == 0) mixer.play(now, 1.8F, pluck(110, 0.12F));
  }
  return mixer.sound();
}

}  // namespace Fixture
