#include "core/BaseImage.h"
