#include "chemical_model/FragmentType.h"

#include "moc_FragmentType.cpp"
