#include "resources/MResourceLibrary.h"

#include <algorithm>
#include <memory>
#include <utility>

#include "core/MFileStream.h"
#include "core/MFormat.h"
#include "core/MSizeStream.h"
#include "core/MStreamTools.h"
#include "core/MTranslate.h"
#include "core/MXMLItemIterator.h"
#include "core/MZLibStream.h"
#include "resources/MLargeResourceFile.h"

namespace {

constexpr int64_t kMostDecompressed = 0x4000000;  // bytes of all compressed items of the small form

struct Head {
  int32_t version, indexSize, itemsSize;

  bool Read(MStream& stream) {
    return ReadWord(stream, version) && ReadWord(stream, indexSize) && ReadWord(stream, itemsSize);
  }
  int64_t GetFileSize() const noexcept {
    return indexSize < 0 || itemsSize < 0 ? -1 : int64_t{3 * 4} + indexSize + itemsSize;
  }

 private:
  static bool ReadWord(MStream& stream, int32_t& word) {
    uint8_t bytes[4];
    if (stream.Read(bytes, 4) < 4) return false;
    uint32_t value = 0;
    for (int32_t i = 3; i >= 0; --i) value = value << 8 | bytes[i];
    word = static_cast<int32_t>(value);
    return true;
  }
};

// Fills an empty block; false when the source has less. Memory grows with what is there, not with `size`.
bool ReadBlock(MStream& source, int32_t size, MMemoryStream& block) {
  if (size < 0) return false;
  MSizeStream window(&source, size, false, false);
  MCopyStream(window, block);
  block.Seek(0, MSeekOrigin::kStart);
  if (block.GetSize() < size) return false;
  block.SetCapacity(size);
  return true;
}

}  // namespace

MResourceLibrary::~MResourceLibrary() {
  Clear();
}

void MResourceLibrary::Load(MStream& stream) {
  MResourceLibrary old;  // the stream may be one of its items
  old.resources_.Swap(resources_);
  std::swap(old.data_, data_);
  std::swap(old.file_, file_);
  Clear();
  try {
    if (!ReadSmallForm(stream)) Clear();
  } catch (...) {
    Clear();
    throw;
  }
}

void MResourceLibrary::LoadFile(const MString& path) {
  std::unique_ptr<MFileStream> file(new MFileStream(path, MFileStream::kRead));
  Clear();
  try {
    Head head;
    const bool isSmall = head.Read(*file) && head.version == 0 && head.GetFileSize() == file->GetSize();
    if (isSmall) {
      file->Seek(0, MSeekOrigin::kStart);
      Load(*file);
    } else {
      path_ = path;
      file_ = new MLargeResourceFile(std::move(file), root_);
      AddResources();
    }
  } catch (MException& failure) {
    Clear();
    failure.AddSource(path);
    throw;
  }
}

void MResourceLibrary::Clear() noexcept {
  for (MResource* const resource : resources_) delete resource;
  resources_ = MList<MResource*>();
  delete std::exchange(data_, nullptr);
  delete std::exchange(file_, nullptr);
  root_.Clear();
  path_.Clear();
}

bool MResourceLibrary::IsEmpty() const noexcept {
  return root_.GetName().IsEmpty() && !data_ && !file_;
}

MMemoryStream& MResourceLibrary::Find(const MString& id) {
  const auto* const found =
      std::find_if(resources_.begin(), resources_.end(),
                   [&id](const MResource* resource) { return resource->id.Compare(id) == 0; });
  if (found == resources_.end())
    throw MException(Format(Translate("Cannot find requested resource ({0}).")).Arg(id).Text());
  MResource& resource = **found;
  if (!resource.isRead) ReadFromFile(resource);
  resource.stream.Seek(0, MSeekOrigin::kStart);
  return resource.stream;
}

bool MResourceLibrary::ReadSmallForm(MStream& stream) {
  Head head;
  MMemoryStream index;
  if (!head.Read(stream) || !ReadBlock(stream, head.indexSize, index)) return false;
  root_.Load(index);
  data_ = new MMemoryStream;
  if (!ReadBlock(stream, head.itemsSize, *data_)) return false;
  AddResources();
  for (MResource* const resource : resources_) {
    const int64_t offset = std::min(resource->offset, data_->GetSize());
    const int64_t size = std::min(resource->size, data_->GetSize() - offset);
    resource->stream = MMemoryStream(data_->GetData() + offset, static_cast<int32_t>(size));
    resource->isRead = true;
  }
  DecompressAll();
  return true;
}

void MResourceLibrary::AddResources() {
  if (!root_.HasSubItem("resources")) return;
  MXMLItemPrefixIterator items(root_.CachedSubItem(), "resource");
  while (const MXMLItem* const item = items.Next()) {
    std::unique_ptr<MResource> resource(new MResource);
    resource->id = item->GetRequiredAttribute("id");
    resource->offset = std::max<int64_t>(item->GetRequiredAttribute("offset").ToInteger(), 0);
    resource->size = std::max<int64_t>(item->GetRequiredAttribute("size").ToInteger(), 0);
    resource->isCompressed = item->HasAttribute("compressed") ? item->CachedAttribute().ToInteger() != 0
                                                              : file_ && file_->HasCompressedItems();
    resources_.Add(resource.get());
    resource.release();
  }
}

// Several items may lie at the same bytes, so only the sum of them all is a limit.
void MResourceLibrary::DecompressAll() {
  int64_t left = kMostDecompressed;
  for (MResource* const resource : resources_) {
    if (!resource->isCompressed) continue;
    MZLibStream filter(&resource->stream, false);
    filter.SetReadLimit(left);
    MMemoryStream content;
    try {
      MCopyStream(filter, content);
    } catch (MException& failure) {
      failure.AddSource(resource->id);
      throw;
    }
    left -= content.GetSize();
    resource->stream = content;
  }
}

void MResourceLibrary::ReadFromFile(MResource& resource) const {
  try {
    const std::unique_ptr<MStream> item =
        file_->OpenItem(resource.offset, resource.size, resource.isCompressed);
    if (!resource.isCompressed && item->GetSize() > MString::kWhole) MThrowOutOfMemory();
    MMemoryStream content;
    MCopyStream(*item, content);
    content.SetCapacity(static_cast<int32_t>(content.GetSize()));
    resource.stream = content;
    resource.isRead = true;
  } catch (MException& failure) {
    failure.AddSource(resource.id);
    failure.AddSource(path_);
    throw;
  }
}
