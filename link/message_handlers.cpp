#include "link/message_handlers.h"

MessageHandlers ReceiveHandlers{};
