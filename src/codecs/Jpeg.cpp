#include "codecs/Jpeg.h"
