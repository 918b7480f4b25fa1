// The main window: the program's switchboard, and what stands behind it. Every handler runs on the main
// thread; other threads reach it by sent messages only.
#pragma once

#include "platform/window.h"

// Posted at a start with an open sheet: no decoder answers, perhaps it lacks its firmware.
inline constexpr UINT WM_OFFERUPGRADE = WM_USER + 10;

// Window procedure of class "Vantrel": 0 for what it handles, the default procedure's result for all else.
LRESULT CALLBACK MainWndProc(HWND window, UINT message, WPARAM wParam, LPARAM lParam);

// Answers what other programs ask, for the status or for a change of settings; false when it is no such
// message.
bool HandleRequest(HWND window, UINT message, WPARAM wParam, LPARAM lParam, LRESULT& answer);

// Acts on a trigger message; false when the message is none. `time` is when the key was moved, in
// milliseconds of any clock, or 0: messages that have overtaken each other are put right by it.
bool HandleTriggerMessage(UINT message, DWORD time);

// Whether the reader items of the notification icon's menu can be chosen: the reader is fitted, "Active
// Device" includes it, and the settings sheet, which keeps both readers off, is not open.
bool BarcodeItemEnabled();
bool RfidItemEnabled();
// Loads the menu afresh, marks its reader items and tracks it; the chosen command arrives as WM_COMMAND.
void ShowTrayMenu(HWND window);
// Destroys the menu, if there is one.
void DestroyTrayMenu();

// Releases everything that start-up and the run have taken. On WM_DESTROY.
void ShellCleanup();
