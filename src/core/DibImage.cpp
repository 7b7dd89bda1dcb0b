#include "core/DibImage.h"
