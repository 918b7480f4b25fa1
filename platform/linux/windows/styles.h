// Styles of windows and controls that only templates name.
#pragma once

#include "platform/window.h"

namespace layer {

inline constexpr DWORD StyleChild = 0x40000000;
inline constexpr DWORD StyleDisabled = 0x08000000;
inline constexpr DWORD StyleCaption = 0x00C00000;
inline constexpr DWORD StyleSystemMenu = 0x00080000;
inline constexpr DWORD StyleTabStop = 0x00010000;

inline constexpr DWORD DialogCentred = 0x0800;

inline constexpr DWORD StaticKind = 0x1F;
inline constexpr DWORD StaticCentred = 1, StaticIcon = 3;
inline constexpr DWORD StaticNoPrefix = 0x80;

inline constexpr DWORD ButtonKind = 0x0F;
inline constexpr DWORD ButtonDefault = 1;

inline constexpr DWORD EditMultiLine = 0x0004;
inline constexpr DWORD EditNumber = 0x2000;

}  // namespace layer
