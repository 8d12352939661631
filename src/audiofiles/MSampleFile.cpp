#include "audiofiles/MSampleFile.h"

#include "audiofiles/MMPEGFile.h"
#include "audiofiles/MWAVReader.h"
#include "audiofiles/MZSDFile.h"
#include "core/MException.h"
#include "core/MFileStream.h"
#include "core/MPath.h"

namespace {

// What follows the last "." of the name, nothing without one.
MString GetExtension(const MString& path) {
  const MString name = GetPathName(path);
  const int32_t dot = name.FindLast('.');
  return dot < 0 ? MString() : name.Substring(dot + 1, name.GetLength());
}

void Load(MAudioBuffer& buffer, MStream& stream, const MString& extension) {
  if (extension.Compare("mp3") == 0) return LoadMPEG(buffer, stream);
  if (extension.Compare("wav") == 0) return LoadWAV(buffer, stream);
  LoadZSD(buffer, stream);
}

}  // namespace

void LoadSamples(MAudioBuffer& buffer, const MString& path) {
  MFileStream file(path, MFileStream::kRead);
  try {
    Load(buffer, file, GetExtension(path));
  } catch (MException& failure) {
    failure.AddSource(path);
    throw;
  }
}
