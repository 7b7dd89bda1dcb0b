#include "core/MappedFile.h"
