#ifndef TARVO_SYSPARA_PARAMETER_SERVICE_STUB_H
#define TARVO_SYSPARA_PARAMETER_SERVICE_STUB_H

#include "i_parameter_service.h"
#include "iremote_stub.h"

namespace Tarvo::system {

// Server side of IParameterService: decodes each request (layout in i_parameter_service.h), calls
// the operation the service implements and encodes its result.
class ParameterServiceStub : public IRemoteStub<IParameterService> {
public:
    int OnRemoteRequest(uint32_t code, MessageParcel& data, MessageParcel& reply, MessageOption& option) override;

private:
    int HandleGet(MessageParcel& data, MessageParcel& reply);
    int HandleSet(MessageParcel& data, MessageParcel& reply);
};

}  // namespace Tarvo::system

#endif  // TARVO_SYSPARA_PARAMETER_SERVICE_STUB_H
