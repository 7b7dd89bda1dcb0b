#include "core/ParaBlock.h"
