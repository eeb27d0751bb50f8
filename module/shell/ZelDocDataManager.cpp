#include "shell/ZelDocDataManager.h"

template class OvApDataManager<CDocData>;
