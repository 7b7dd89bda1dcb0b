#include "core/Text.h"
