#include "codecs/Tiff.h"
