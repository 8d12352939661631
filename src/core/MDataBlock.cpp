#include "core/MDataBlock.h"

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

void MDataBlock::Drop(MDataBlock* block) noexcept {
  if (!block || std::atomic_ref<int32_t>(block->references).fetch_sub(1, std::memory_order_acq_rel) != 1)
    return;
  if (block->data && block->IsOwned()) MRelease(block->data);
  delete block;
}
