#include "codecs/Gif.h"
