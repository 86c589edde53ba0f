#pragma once
// A run-time failure inside the generator: what the procedure's error exit reports
// ("Error #13: Type mismatch, clcGenerateSeries, AddUserSeries"). It never leaves the
// generator: GenerateSeries catches it, reports it and leaves the file unwritten.
#include <string>

namespace tessaly::genseries {

struct GenFailure {
  long number = 0;
  std::string description;
  std::string procedure;
};

inline constexpr long kTypeMismatch = 13;
inline constexpr long kOverflow = 6;
inline constexpr long kSubscriptOutOfRange = 9;

[[noreturn]] inline void RaiseTypeMismatch(const std::string& procedure) {
  throw GenFailure{kTypeMismatch, "Type mismatch", procedure};
}

}  // namespace tessaly::genseries
