#include "codecs/Bmp.h"
