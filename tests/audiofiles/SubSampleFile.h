#pragma once
// Bytes of subsample libraries for tests, put together field by field.

#include <array>
#include <cstdint>
#include <cstring>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

struct SubSampleFile {
  struct Sound {
    int32_t frames = 1;
    int32_t length = 4096;
    int32_t channels = 1;
    std::vector<float> values;           // its data; fewer or more than its fields say are written as given
    std::optional<int64_t> offset = {};  // instead of the place where the values go
  };
  struct Band {
    int32_t firstBin = 0;
    int32_t binCount = 1;
    std::vector<Sound> sounds;
    std::optional<int32_t> count = {};  // instead of the count of sounds
  };

  int32_t rate = 44100;
  std::array<Band, 10> bands;

  // Everything up to the data.
  std::string GetHeader() const {
    std::string bytes;
    Put(bytes, rate);
    bytes.append(64, 'n').append(8, '\x7f');
    int64_t place = 0;
    for (const Band& band : bands) {
      Put(bytes, band.firstBin);
      Put(bytes, band.binCount);
      Put(bytes, band.count.value_or(static_cast<int32_t>(band.sounds.size())));
      bytes.append(8, '\x7f');
      for (const Sound& sound : band.sounds) {
        Put(bytes, sound.frames);
        Put(bytes, sound.length);
        Put(bytes, sound.channels);
        Put(bytes, sound.offset.value_or(place));
        bytes.append(8, '\x7f');
        place += static_cast<int64_t>(4 * sound.values.size());
      }
    }
    return bytes;
  }
  std::string GetBytes() const {
    std::string bytes = GetHeader();
    for (const Band& band : bands)
      for (const Sound& sound : band.sounds)
        for (const float value : sound.values) Put(bytes, value);
    return bytes;
  }

 private:
  template <typename Number>
  static void Put(std::string& bytes, Number number) {
    char raw[sizeof number];
    std::memcpy(raw, &number, sizeof number);
    bytes.append(raw, sizeof number);
  }
};
