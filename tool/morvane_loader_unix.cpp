#include "morvane_loader.h"

#include <dlfcn.h>

const char *morvane::loaderReason()
{
    return dlerror();
}
