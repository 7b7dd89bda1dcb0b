#include "core/DirBlock.h"
