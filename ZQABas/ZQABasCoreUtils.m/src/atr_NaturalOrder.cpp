#include "atr_NaturalOrder.h"

#include <atomic>

namespace {

std::atomic<bool> g_NaturalOrder{false};

bool IsDigit(unsigned char c) { return c >= '0' && c <= '9'; }

// Compares the digit runs that start at left and right by value, advancing
// both past them.
int CompareNumbers(unsigned char const*& left, unsigned char const*& right) {
  while (*left == '0') ++left;
  while (*right == '0') ++right;
  int firstDifference = 0;
  for (;; ++left, ++right) {
    bool leftDigit = IsDigit(*left);
    bool rightDigit = IsDigit(*right);
    if (!leftDigit && !rightDigit) return firstDifference;
    if (!leftDigit) return -1;  // fewer significant digits
    if (!rightDigit) return 1;
    if (firstDifference == 0 && *left != *right) firstDifference = *left < *right ? -1 : 1;
  }
}

}  // namespace

bool atr_getNaturalOrder() { return g_NaturalOrder.load(std::memory_order_relaxed); }

void atr_setNaturalOrder(bool natural) { g_NaturalOrder.store(natural, std::memory_order_relaxed); }

int strnatcmp(char const* leftText, char const* rightText) {
  auto const* left = reinterpret_cast<unsigned char const*>(leftText ? leftText : "");
  auto const* right = reinterpret_cast<unsigned char const*>(rightText ? rightText : "");
  for (;;) {
    if (IsDigit(*left) && IsDigit(*right)) {
      int order = CompareNumbers(left, right);
      if (order != 0) return order;
      continue;
    }
    if (*left != *right) return *left < *right ? -1 : 1;
    if (*left == '\0') return 0;
    ++left;
    ++right;
  }
}
