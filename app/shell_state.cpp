#include "app/shell_state.h"

ShellRecord ShellState;
