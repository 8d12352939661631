// The bytes are a library of the small form, in memory and in a file; then, behind a byte of flags, an
// index's text and items, with a line feed between them, which become a file of the large form with the right
// digest. Loading raises or gives items, and every item can be read, twice with the same result, or raises.

#include "tests/resources/ResourceFiles.h"

namespace {

template <typename Use>
void Try(Use use) {
  try {
    use();
  } catch (const MException& raised) {
    if (raised.message.IsEmpty()) __builtin_trap();
  }
}

void ReadItems(MResourceLibrary& library) {
  for (const MResource* const resource : library.GetResources())
    Try([&] {
      const std::string first = All(library.Find(resource->id));
      if (All(library.Find(resource->id)) != first) __builtin_trap();
    });
}

void LoadFromFile(const std::string& bytes) {
  static LibraryFile file("");
  file.Write(bytes);
  MResourceLibrary library;
  try {
    file.LoadInto(library);
  } catch (const MException&) {
    if (!library.IsEmpty()) __builtin_trap();
  }
  ReadItems(library);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* input, std::size_t size) {
  const std::string bytes(reinterpret_cast<const char*>(input), size);
  MResourceLibrary library;
  Try([&] { LoadBytes(library, bytes); });
  ReadItems(library);
  LoadFromFile(bytes);
  if (size < 1) return 0;
  const std::size_t end = std::min(bytes.find('\n', 1), size);
  LoadFromFile(LargeFile(bytes.substr(1, end - 1), bytes.substr(std::min(end + 1, size)), input[0]));
  return 0;
}
