#include "batch/ImageFiles.h"
