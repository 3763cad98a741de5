#include "uri.h"

#include <utility>

namespace Tarvo {

Uri::Uri(std::string uriString) : uriString_(std::move(uriString)) {}

}  // namespace Tarvo
