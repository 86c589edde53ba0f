#pragma once
// The application's name as its boxes, logs and settings show it.
namespace tessaly::shell {

inline constexpr const char* kApplicationTitle = "Tessaly";
inline constexpr const char* kProductName = "Tessaly";
inline constexpr const char* kVersion = "1.0";

}  // namespace tessaly::shell
