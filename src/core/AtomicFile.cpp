#include "core/AtomicFile.h"
