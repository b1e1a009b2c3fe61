#pragma once
// An array with an explicit index range, as the game's records declare them
// (upper indices from files, the walls' single index -1, lap times 1..3).
#include <cstddef>
#include <vector>

template <class T>
class IndexedArray {
 public:
  IndexedArray() = default;
  IndexedArray(int lower, int upper) { Resize(lower, upper); }

  // Replaces the contents with default elements lower..upper (empty when upper < lower).
  void Resize(int lower, int upper) {
    lower_ = lower;
    items_.assign(upper >= lower ? static_cast<size_t>(upper - lower + 1) : 0, T{});
  }
  // Keeps the existing elements and the lower bound, grows or shrinks to upper.
  void Resize_Keep(int upper) { items_.resize(upper >= lower_ ? static_cast<size_t>(upper - lower_ + 1) : 0); }
  int Lower() const { return lower_; }
  int Upper() const { return lower_ + static_cast<int>(items_.size()) - 1; }
  int Count() const { return static_cast<int>(items_.size()); }
  bool Contains(int i) const { return i >= lower_ && i <= Upper(); }
  T& operator()(int i) { return items_[static_cast<size_t>(i - lower_)]; }
  const T& operator()(int i) const { return items_[static_cast<size_t>(i - lower_)]; }
  std::vector<T>& Items() { return items_; }
  const std::vector<T>& Items() const { return items_; }

 private:
  int lower_ = 0;
  std::vector<T> items_;
};
