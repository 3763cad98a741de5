#ifndef TARVO_SYSPARA_PARAMETERS_H
#define TARVO_SYSPARA_PARAMETERS_H

#include <string>

namespace Tarvo::system {

// System parameters, held by the parameter service; each call is a synchronous request to it.
// False when the service cannot be reached or refuses the pair (see IParameterService).
bool SetParameter(const std::string& key, const std::string& value);
// The parameter's value; def when it is not set or the service cannot be reached.
std::string GetParameter(const std::string& key, const std::string& def);

}  // namespace Tarvo::system

#endif  // TARVO_SYSPARA_PARAMETERS_H
