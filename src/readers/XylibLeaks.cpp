// The leak-checker suppression of xylib, linked into the programs that read through it when
// they are built with the sanitizers (never part of the core library).
#include "readers/XylibLeaks.h"
