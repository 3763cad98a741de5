#ifndef TARVO_DISPLAY_MANAGER_DISPLAY_MANAGER_SERVICE_STUB_H
#define TARVO_DISPLAY_MANAGER_DISPLAY_MANAGER_SERVICE_STUB_H

#include "i_display_manager_service.h"
#include "iremote_stub.h"

namespace Tarvo::Vantel {

// Server side of IDisplayManagerService: decodes each request (layout in
// i_display_manager_service.h), calls the operation the service implements and encodes its result.
class DisplayManagerServiceStub : public IRemoteStub<IDisplayManagerService> {
public:
    int OnRemoteRequest(uint32_t code, MessageParcel& data, MessageParcel& reply, MessageOption& option) override;

private:
    int HandleGetScreenInfo(MessageParcel& data, MessageParcel& reply);
    int HandleGetAllScreenInfos(MessageParcel& reply);
    int HandleSetResolution(MessageParcel& data, MessageParcel& reply);
};

}  // namespace Tarvo::Vantel

#endif  // TARVO_DISPLAY_MANAGER_DISPLAY_MANAGER_SERVICE_STUB_H
