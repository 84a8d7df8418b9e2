#include "common/ms_types/MsDataSourceInterface.h"

namespace zel::msreader {

MsDataSourceInterface::~MsDataSourceInterface() = default;

} // namespace zel::msreader
