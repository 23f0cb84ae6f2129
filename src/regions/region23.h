// Configuration region 23: a chain of typed records.
#pragma once

#include <cstdint>
#include <span>

#include "regions/image.h"
#include "transport/callback_table.h"

namespace vaskdfc {

// Why searchRegion23 found nothing.
enum class SearchStatus : std::uint8_t { kFound = 0, kTooShort = 252, kEnd = 253, kVersion = 254, kSignature = 255 };

// Writes the default image over the first 359 bytes; what follows them stays. Always 0.
std::uint32_t initRegion23(std::uint8_t* image);

// Whether an image that was read is one, as far as GetRegion23 looks.
bool is_region23(std::span<std::uint8_t> image);

// The header of the first record of the wanted type; null when there is none, and then the status says why.
std::uint8_t* searchRegion23(std::span<std::uint8_t> image, std::uint8_t wanted, SearchStatus& status);

// Writes region 23 of an adapter of the newer generation; the result is the adapter's reply word.
std::uint32_t fcoeSetRegion23(std::uint32_t board, const void* image, std::uint32_t size);

// Region 23 of one adapter, from reading to writing back.
class Region23 {
 public:
  // Results: those of GetRegion23.
  std::uint32_t read(std::uint32_t board, std::uint32_t sli_mode);

  // The record of type T::kType in the image; null when there is none or the image ends before its last field.
  template <Record T>
  T* find() const {
    static_assert(alignof(T) == 1, "records of an image lie at any address");
    return reinterpret_cast<T*>(find(T::kType, sizeof(T)));
  }

  // Writes the image back; the result is the adapter's reply word, or that of the mailbox on the older generation.
  std::uint32_t write() const;

 private:
  std::uint8_t* find(std::uint8_t type, std::size_t bytes) const;

  Image image_;
  std::uint32_t size_ = 0;
  std::uint32_t board_ = 0;
  std::uint32_t sli_mode_ = 0;
};

}  // namespace vaskdfc
