#include "tone/AutoLevels.h"
