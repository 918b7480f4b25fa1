// Names of the common controls that stand for wrapped calls; for the system, not for the sources here.
#pragma once

#include "platform/win32/sheet.h"

#define PropertySheetW TerminalPropertySheetW
#define GetMessagePos TerminalGetMessagePos
