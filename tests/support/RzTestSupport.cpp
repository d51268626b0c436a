#include "RzTestSupport.h"
