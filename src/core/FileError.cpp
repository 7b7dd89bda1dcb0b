#include "core/FileError.h"
