#include "dsp/MEnvelopeComputer.h"

#include <type_traits>

#include "core/MException.h"
#include "dsp/MEnvelopeBuilder.h"

using MEnvelopeItems::Item;

MEnvelopeComputer::MEnvelopeComputer(const MEnvelopeComputer& other)
    : currentIndex_(other.currentIndex_),
      currentX_(other.currentX_),
      xMinimum_(other.xMinimum_),
      xMaximum_(other.xMaximum_),
      tailStart_(other.tailStart_) {
  items_.reserve(other.items_.size());
  for (const ItemPointer& item : other.items_) items_.emplace_back(new Item(item->GetEnd()));
}

MEnvelopeComputer& MEnvelopeComputer::operator=(const MEnvelopeComputer& other) {
  MEnvelopeComputer copy(other);
  items_.swap(copy.items_);
  isBuilt_ = false;
  currentIndex_ = copy.currentIndex_;
  currentX_ = copy.currentX_;
  xMinimum_ = copy.xMinimum_;
  xMaximum_ = copy.xMaximum_;
  tailStart_ = copy.tailStart_;
  return *this;
}

void MEnvelopeComputer::Build(const MEnvelopeData& data) {
  MEnvelopeBuilder builder(data);
  items_ = builder.TakeItems();
  isBuilt_ = true;
  currentIndex_ = 0;
  currentX_ = data.xMinimum;
  xMinimum_ = data.xMinimum;
  xMaximum_ = data.xMaximum;
  tailStart_ = builder.GetTailStart();
}

void MEnvelopeComputer::Seek(double x) noexcept {
  if (!(currentX_ > x)) return;
  while (currentIndex_ > 0 && items_[static_cast<std::size_t>(currentIndex_ - 1)]->GetEnd() > x)
    --currentIndex_;
  currentX_ = x;
}

template <typename Out>
void MEnvelopeComputer::Fill(Out* output, double x, double step, int32_t count) noexcept {
  if (count <= 0) return;
  if (!isBuilt_) {
    std::fill_n(output, count, Out{0});
    return;
  }
  Advance(x);
  while (count > 0) {
    const Item& item = *items_[static_cast<std::size_t>(currentIndex_)];
    int32_t served = count;
    bool isLeaving = false;
    if (currentIndex_ + 1 < GetItemCount() && step > 0) {
      const double samples = std::ceil((item.GetEnd() - x) / step);
      isLeaving = samples < count;
      if (isLeaving) served = samples > 0 ? static_cast<int32_t>(samples) : 0;
    }
    if constexpr (std::is_same_v<Out, float>)
      item.FillFloat(output, x, step, served);
    else
      item.FillDouble(output, x, step, served);
    x += served * step;
    output += served;
    count -= served;
    if (!isLeaving) break;
    ++currentIndex_;
    if constexpr (std::is_same_v<Out, float>) x = std::max(x, item.GetEnd());
  }
  currentX_ = x;
}

void MEnvelopeComputer::FillDouble(double* output, double start, double step, int32_t count) noexcept {
  Fill(output, start, step, count);
}

void MEnvelopeComputer::FillFloat(float* output, double start, double step, int32_t count) noexcept {
  Fill(output, start, step, count);
}

const Item& MEnvelopeComputer::GetItem(int32_t index) const {
  if (index < 0 || index >= GetItemCount()) MThrowIndexOutOfRange();
  return *items_[static_cast<std::size_t>(index)];
}

double MEnvelopeComputer::Evaluate(const MEnvelopeData& data, double x) {
  MEnvelopeComputer computer;
  computer.Build(data);
  return computer.GetValue(x);
}
