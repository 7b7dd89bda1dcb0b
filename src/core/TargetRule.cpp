#include "core/TargetRule.h"
