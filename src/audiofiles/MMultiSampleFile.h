#pragma once
#include <memory>
#include <vector>

#include "core/MAudioBuffer.h"
#include "core/MMemory.h"
#include "core/MString.h"

class MLargeResourceFile;
class MStream;
class MXMLItem;

// A file of the type "qxMultiSample", a large resource library: the same sound recorded at several loudness
// layers, each with alternative takes, each take with a file of interleaved samples per track. This class
// knows the index and reads single tracks; MMultiSample keeps what was read.
//
// The root of the index has "samplerate"; children "track" with "name", "volume" and "pan"; children "sample"
// with "length", "rms", "maxrmsindex" and "group", sorted by rising loudness, those of a layer together; in a
// sample, per track, a child "file" with "channels", "length", "bps", "filestart" and "filesize". Tracks
// beyond sixteen are not read. One thread at a time.
class MMultiSampleFile {
 public:
  static constexpr int32_t kMostTracks = 16;

  template <typename T>
  using List = std::vector<T, MAllocator<T>>;

  struct Track {
    MString name;
    double volume;
    double pan;
  };
  // One track of a take: where its bytes lie, and as what.
  struct File {
    int32_t channels;
    int32_t length;
    int32_t bits;
    int64_t start;
    int64_t size;  // of the plain bytes
  };
  struct Take {
    int32_t length;
    double loudness;       // of the last take, the loudest one: 1
    int32_t loudestTrack;  // outside of the tracks: none
    List<File> files;      // of the tracks, at most kMostTracks
  };
  // Takes first to last, and the loudness of the last.
  struct Layer {
    double loudness;
    int32_t first;
    int32_t last;
  };

  M_LIBRARY_MEMORY

  // Reads the index. Raises what MFileStream and MLargeResourceFile do, and "Empty multisample."; the source
  // begins with the path.
  explicit MMultiSampleFile(const MString& path);
  ~MMultiSampleFile();

  int32_t GetSampleRate() const noexcept { return sampleRate_; }  // at least 1
  const List<Track>& GetTracks() const noexcept { return tracks_; }
  const List<Take>& GetTakes() const noexcept { return takes_; }  // at least one
  const List<Layer>& GetLayers() const noexcept { return layers_; }
  int32_t GetLongest() const noexcept;  // length of a take

  // Reads at most `limit` samples of a track of a take into `buffer`, whatever was in it. Raises "Sample is
  // not available." for a track that the take does not have, or channels outside of 1 to 8, or a length below
  // 0; "Invalid source bitrate."; and what streams raise, for missing bytes "Could not read required data
  // from stream.". The buffer is empty then.
  void Read(MAudioBuffer& buffer, int32_t take, int32_t track, int32_t limit) const;

 private:
  void ReadIndex(const MXMLItem& root);
  void FindLayers(const List<int32_t>& groups);
  void ReadSamples(MAudioBuffer& buffer, const File& file, int32_t length) const;

  MString path_;
  std::unique_ptr<MLargeResourceFile> library_;
  int32_t sampleRate_ = 1;
  List<Track> tracks_;
  List<Take> takes_;
  List<Layer> layers_;
};
