#include "hosts/cli/MidiFile.h"

#include <algorithm>
#include <cerrno>
#include <fstream>
#include <optional>
#include <string_view>

#include "hosts/cli/Failure.h"
#include "hosts/cli/System.h"

namespace cli {

namespace {

constexpr uint8_t kProgram = 0xC0, kPressure = 0xD0;
constexpr uint8_t kSystem = 0xF0, kExclusive = 0xF0, kExclusiveRest = 0xF7, kMeta = 0xFF;
constexpr uint8_t kEndOfTrack = 0x2F, kTempo = 0x51;
constexpr uint32_t kUsualTempo = 500000;  // microseconds a quarter note
constexpr std::size_t kLongestFile = std::size_t{1} << 26;

// The bytes of a file or of a chunk, from front to back.
class ByteReader {
 public:
  ByteReader(std::span<const uint8_t> bytes, std::size_t start, const std::string& name)
      : bytes_(bytes), start_(start), name_(name) {}

  bool IsAtEnd() const noexcept { return next_ == bytes_.size(); }
  uint8_t Peek() const { return Rest(1)[0]; }
  uint8_t ReadByte() { return Take(1)[0]; }
  uint8_t ReadData() {
    if (Peek() >= 0x80) Fail("an event has too few bytes");
    return ReadByte();
  }
  uint32_t ReadNumber(std::size_t bytes) {
    uint32_t number = 0;
    for (const uint8_t byte : Take(bytes)) number = number << 8 | byte;
    return number;
  }
  // Seven bits a byte, four bytes at most.
  uint32_t ReadVariable() {
    uint32_t number = 0;
    for (int i = 0; i < 4; ++i) {
      const uint8_t byte = ReadByte();
      number = number << 7 | (byte & 0x7F);
      if (byte < 0x80) return number;
    }
    Fail("a number has more than four bytes");
  }
  std::span<const uint8_t> Take(std::size_t count) {
    const std::span<const uint8_t> taken = Rest(count).first(count);
    next_ += count;
    return taken;
  }
  ByteReader TakeChunk(std::size_t count) {
    const std::size_t start = start_ + next_;
    return ByteReader(Take(count), start, name_);
  }
  [[noreturn]] void Fail(const std::string& what) const {
    throw Failure(ExitCode::kFile, name_ + ", byte " + std::to_string(start_ + next_) +
                                       ": it cannot be read as a MIDI file: " + what);
  }

 private:
  std::span<const uint8_t> Rest(std::size_t wanted) const {
    if (bytes_.size() - next_ < wanted) Fail("it is cut off");
    return bytes_.subspan(next_);
  }

  std::span<const uint8_t> bytes_;
  std::size_t start_;  // of the bytes in the file
  const std::string& name_;
  std::size_t next_ = 0;
};

// How long a tick is.
struct Division {
  double seconds = 0;       // where ticks are parts of a film's frames, else 0
  uint32_t perQuarter = 1;  // else

  explicit Division(ByteReader& reader) {
    const uint32_t word = reader.ReadNumber(2);
    const uint32_t perFrame = word & 0xFF, framesPerSecond = 0x100 - (word >> 8);
    if ((word & 0x8000) == 0) {
      perQuarter = word;
    } else {
      if (framesPerSecond != 24 && framesPerSecond != 25 && framesPerSecond != 29 && framesPerSecond != 30)
        reader.Fail("it counts frames at an unknown rate");
      const double rate = framesPerSecond == 29 ? 30000.0 / 1001 : framesPerSecond;
      seconds = 1 / (rate * std::max(perFrame, 1u));
    }
    if (word == 0 || (seconds > 0 && perFrame == 0)) reader.Fail("its ticks have no length");
  }
};

// Of an event that an instrument hears, or of a tempo.
struct TimedEvent {
  uint64_t ticks;
  MidiEvent event;
  uint32_t tempo;  // 0: none
};

std::optional<bridge::NoteEvent> ReadChannelEvent(ByteReader& reader, uint8_t status) {
  const uint8_t kind = status & 0xF0;
  const uint8_t first = reader.ReadData();
  const uint8_t second = kind == kProgram || kind == kPressure ? uint8_t{0} : reader.ReadData();
  return bridge::ReadMidiMessage(status, first, second);
}

// Reads a meta event whose status is read; false at the end of the track.
bool ReadMeta(ByteReader& reader, uint64_t ticks, std::vector<TimedEvent>& events) {
  const uint8_t type = reader.ReadByte();
  ByteReader data = reader.TakeChunk(reader.ReadVariable());
  if (type == kTempo) {
    const uint32_t tempo = data.ReadNumber(3);
    if (tempo == 0) data.Fail("a tempo is 0");
    events.push_back({ticks, {}, tempo});
  }
  return type != kEndOfTrack;
}

// Events follow the status of the one before them until there is another.
void ReadTrack(ByteReader reader, std::vector<TimedEvent>& events) {
  uint64_t ticks = 0;
  uint8_t status = 0;
  while (!reader.IsAtEnd()) {
    ticks += reader.ReadVariable();
    const uint8_t next = reader.Peek();
    if (next == kMeta) {
      reader.ReadByte();
      if (!ReadMeta(reader, ticks, events)) return;
    } else if (next == kExclusive || next == kExclusiveRest) {
      reader.ReadByte();
      reader.Take(reader.ReadVariable());
    } else {
      if (next > kSystem) reader.Fail("an event is of no known kind");
      if (next >= 0x80) status = reader.ReadByte();
      if (status == 0) reader.Fail("an event has no status");
      if (const auto event = ReadChannelEvent(reader, status)) events.push_back({ticks, {*event, 0}, 0});
    }
  }
}

std::vector<MidiEvent> PlaceInTime(std::vector<TimedEvent>& events, const Division& division,
                                   const ByteReader& reader) {
  std::stable_sort(events.begin(), events.end(),
                   [](const TimedEvent& a, const TimedEvent& b) { return a.ticks < b.ticks; });
  std::vector<MidiEvent> placed;
  double seconds = 0;  // at the last tempo, whose ticks are
  uint64_t start = 0;
  uint32_t tempo = kUsualTempo;
  for (const TimedEvent& timed : events) {
    const auto ticks = static_cast<double>(timed.ticks - start);
    const double passed =
        ticks * (division.seconds > 0 ? division.seconds : tempo * 1e-6 / division.perQuarter);
    if (!(seconds + passed <= kMaximumMidiSeconds)) reader.Fail("it lasts longer than a day");
    if (timed.tempo == 0) {
      placed.push_back(timed.event);
      placed.back().seconds = seconds + passed;
    } else {
      seconds += passed;
      start = timed.ticks;
      tempo = timed.tempo;
    }
  }
  return placed;
}

}  // namespace

std::vector<MidiEvent> ParseMidi(std::span<const uint8_t> bytes, const std::string& name) {
  constexpr uint32_t kHeader = 0x4D546864, kTrack = 0x4D54726B;  // "MThd", "MTrk"
  ByteReader reader(bytes, 0, name);
  if (bytes.size() < 4 || reader.ReadNumber(4) != kHeader) reader.Fail("it does not begin with MThd");
  ByteReader header = reader.TakeChunk(reader.ReadNumber(4));
  if (header.ReadNumber(2) > 1) header.Fail("its tracks are pieces of their own (format 2)");
  uint32_t tracksLeft = header.ReadNumber(2);
  const Division division(header);
  std::vector<TimedEvent> events;
  while (!reader.IsAtEnd() && tracksLeft > 0) {
    const uint32_t kind = reader.ReadNumber(4);
    const ByteReader chunk = reader.TakeChunk(reader.ReadNumber(4));
    if (kind != kTrack) continue;
    ReadTrack(chunk, events);
    --tracksLeft;
  }
  if (tracksLeft > 0) reader.Fail("tracks are missing");
  return PlaceInTime(events, division, reader);
}

std::vector<MidiEvent> ReadMidiFile(const std::string& path) {
  if (const std::string why = WhyUnreadable(path); !why.empty())
    throw Failure(ExitCode::kFile, path + ": " + why);
  std::ifstream file(path, std::ios::binary);
  std::vector<uint8_t> bytes;
  char chunk[1 << 16];
  while (file.read(chunk, sizeof chunk) || file.gcount() > 0) {
    bytes.insert(bytes.end(), chunk, chunk + file.gcount());
    if (bytes.size() > kLongestFile)
      throw Failure(ExitCode::kFile, path + ": it is too long for a MIDI file");
  }
  if (!file.eof()) throw Failure(ExitCode::kFile, path + ": " + ErrorText(errno));
  return ParseMidi(bytes, path);
}

}  // namespace cli
