// The program's fixed identity: what it calls itself to the desktop, in its window and to the service.
#pragma once

namespace identity {

inline constexpr char kName[] = "Platterscope";
inline constexpr char kVersion[] = PLATTERSCOPE_VERSION;  // from the project() line of CMakeLists.txt
inline constexpr char kDesktopFileName[] = "example.platterscope.Platterscope";
inline constexpr char kIconResource[] = ":/icons/platterscope.png";

}  // namespace identity
