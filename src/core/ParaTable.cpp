#include "core/ParaTable.h"
