#include "core/MDataBlock.h"

#include "core/MString.h"

namespace {

struct TextBlock : MDataBlock {
  explicit TextBlock(const MString& shared) noexcept : text(shared) {}

  MString text;  // keeps the units: who writes to another copy of it gets units of its own
};

}  // namespace

MDataBlock* MDataBlock::Make(int32_t size) {
  uint8_t* const bytes =
      size > 0 ? static_cast<uint8_t*>(MAllocate(static_cast<std::size_t>(size))) : nullptr;
  MDataBlock* block;
  try {
    block = new MDataBlock;
  } catch (...) {
    if (bytes) MRelease(bytes);
    throw;
  }
  block->data = bytes;
  block->size = bytes ? size : 0;
  return block;
}

MDataBlock* MDataBlock::Share(const MString& text, int32_t size) {
  MDataBlock* const block = new TextBlock(text);
  block->data = reinterpret_cast<uint8_t*>(const_cast<MChar*>(text.Units()));
  block->size = size;
  block->flags = kUnowned | kText;
  return block;
}

void MDataBlock::Drop(MDataBlock* block) noexcept {
  if (!block || std::atomic_ref<int32_t>(block->references).fetch_sub(1, std::memory_order_acq_rel) != 1)
    return;
  if (block->data && block->IsOwned()) MRelease(block->data);
  if (block->flags & kText)
    delete static_cast<TextBlock*>(block);
  else
    delete block;
}
