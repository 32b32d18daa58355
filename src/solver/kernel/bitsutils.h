#pragma once

#include <array>

// Bit tricks for the subset representations.
namespace BitsUtils {

namespace detail {
// Index of the lowest set bit of a 64-bit word: the word below and including
// that bit is folded to 32 bits, and the multiplication by a de Bruijn-like
// constant puts a distinct pattern in the top six bits for each of the 64
// possible positions.
constexpr unsigned int FOLD_MULTIPLIER = 2015959759u;

constexpr unsigned int foldedIndex(unsigned long long word) {
    unsigned long long below = word ^ (word - 1);
    unsigned int folded = static_cast<unsigned int>(below) ^ static_cast<unsigned int>(below >> 32);
    return (folded * FOLD_MULTIPLIER) >> 26;
}

constexpr std::array<unsigned char, 64> makeTable() {
    std::array<unsigned char, 64> table{};
    for (unsigned int i = 0; i < 64; ++i) table[foldedIndex(1ull << i)] = static_cast<unsigned char>(i);
    return table;
}

constexpr std::array<unsigned char, 64> FFS_TABLE = makeTable();
}  // namespace detail

// Position of the lowest set bit of a non-zero word.
inline unsigned int ffs(unsigned long long word) {
    return detail::FFS_TABLE[detail::foldedIndex(word)];
}

inline unsigned int popcount(unsigned long long word) {
    return static_cast<unsigned int>(__builtin_popcountll(word));
}

// Position of the r-th (from 0) set bit of a word that has more than r.
inline unsigned int nthSetBit(unsigned long long word, unsigned int r) {
    for (; r > 0; --r) word &= word - 1;
    return ffs(word);
}

}  // namespace BitsUtils
