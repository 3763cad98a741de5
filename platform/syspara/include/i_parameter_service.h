#ifndef TARVO_SYSPARA_I_PARAMETER_SERVICE_H
#define TARVO_SYSPARA_I_PARAMETER_SERVICE_H

#include <optional>
#include <string>

#include "iremote_broker.h"

namespace Tarvo::system {

// The parameter service (system ability PARAMETER_SERVICE_ID): the device's key-value store of
// system parameters. All requests are synchronous.
//
// Wire format (data after the interface token):
//   GET_PARAMETER   data string key;                reply int32 found (0/1), string value if found
//   SET_PARAMETER   data string key, string value;  reply int32 result (0: set, PARAMETER_REFUSED: refused)
// A request with a wrong token or missing fields is refused with ERR_INVALID_VALUE, unapplied.
//
// A key is non-empty and holds neither '=' nor a line break; a value holds no line break (the
// service keeps them as "key=value" lines).
class IParameterService : public IRemoteBroker {
public:
    DECLARE_INTERFACE_DESCRIPTOR(u"tarvo.startup.ParameterService");

    static constexpr int32_t PARAMETER_SERVICE_ID = 1901;
    static constexpr int32_t PARAMETER_REFUSED = 1;

    enum Code : uint32_t {
        GET_PARAMETER = 1,
        SET_PARAMETER = 2,
    };

    static bool IsValidParameter(const std::string& key, const std::string& value)
    {
        return !key.empty() && key.find_first_of("=\r\n") == std::string::npos &&
               value.find_first_of("\r\n") == std::string::npos;
    }

    // 0 or PARAMETER_REFUSED from the service; a transport code when it could not be asked.
    virtual int32_t SetParameter(const std::string& key, const std::string& value) = 0;
    virtual std::optional<std::string> GetParameter(const std::string& key) = 0;
};

}  // namespace Tarvo::system

#endif  // TARVO_SYSPARA_I_PARAMETER_SERVICE_H
