#ifndef TARVO_RENDER_SERVICE_RENDER_SERVICE_STUB_H
#define TARVO_RENDER_SERVICE_RENDER_SERVICE_STUB_H

#include "i_render_service.h"
#include "iremote_stub.h"

namespace Tarvo::Vantel {

// Server side of IRenderService: decodes each request (layout in i_render_service.h) and calls the
// matching operation, which the render service implements.
class RenderServiceStub : public IRemoteStub<IRenderService> {
public:
    int OnRemoteRequest(uint32_t code, MessageParcel& data, MessageParcel& reply, MessageOption& option) override;

private:
    int HandlePackageEvent(MessageParcel& data);
    int HandleRefreshRateEvent(MessageParcel& data);
    int HandleLightFactorStatus(MessageParcel& data);
};

}  // namespace Tarvo::Vantel

#endif  // TARVO_RENDER_SERVICE_RENDER_SERVICE_STUB_H
