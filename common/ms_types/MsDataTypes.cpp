#include "common/ms_types/MsDataTypes.h"

#include "moc_MsDataTypes.cpp"
