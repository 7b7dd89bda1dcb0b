#include "codecs/Webp.h"
