#include "shell/shell_state.h"

ShellRecord ShellState;
