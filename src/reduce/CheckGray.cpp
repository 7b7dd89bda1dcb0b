#include "reduce/CheckGray.h"
