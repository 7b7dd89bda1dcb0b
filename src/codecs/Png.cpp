#include "codecs/Png.h"
