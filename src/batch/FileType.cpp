#include "batch/FileType.h"
