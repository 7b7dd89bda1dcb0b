#include "codecs/ImageInfo.h"
