#include "common_event_service.h"

#include "common_event_hub.h"

namespace Tarvo::Emu {

CommonEventService::CommonEventService(DeviceContext& ctx) : ctx_(ctx) {}

CommonEventService::~CommonEventService() = default;

void CommonEventService::Start()
{
    if (process_ != nullptr) {
        return;
    }
    hub_ = ctx_.LaunchService<CommonEventHub>("common_event_service", SA_ID, process_);
}

bool CommonEventService::Publish(const std::string& action, const std::optional<std::string>& bundle,
                                 std::optional<int32_t> code)
{
    if (hub_ == nullptr) {
        return false;
    }
    AAFwk::Want want;
    want.SetAction(action);
    want.SetBundle(bundle.value_or(""));
    EventFwk::CommonEventData data(want, code.value_or(0), "");
    // As the service itself, so the deliveries leave from its process.
    ScopedProcess scope(process_);
    return hub_->Publish(data) == EventFwk::ICommonEventService::RESULT_OK;
}

size_t CommonEventService::SubscriptionCount() const
{
    return hub_ != nullptr ? hub_->SubscriptionCount() : 0;
}

}  // namespace Tarvo::Emu
