// The leak-checker suppression of xylib for the readers' test program.
#include "XylibLeaks.h"
