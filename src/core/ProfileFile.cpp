#include "core/ProfileFile.h"
