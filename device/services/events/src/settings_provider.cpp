#include "settings_provider.h"

#include "settings_provider_stub.h"
#include "settings_store.h"

namespace Tarvo::Emu {

SettingsProvider::SettingsProvider(DeviceContext& ctx)
    : ctx_(ctx), store_(std::make_shared<SettingsStore>(ctx.GetTrace()))
{
}

SettingsProvider::~SettingsProvider() = default;

bool SettingsProvider::Start(std::string* error)
{
    if (process_ != nullptr) {
        return true;
    }
    if (!store_->Open(ctx_.DataDir() + "/" + DATABASE_FILE, error)) {
        return false;
    }
    stub_ = ctx_.LaunchService<SettingsProviderStub>("settings_provider", SA_ID, process_, store_);
    return true;
}

void SettingsProvider::SetUp(bool up)
{
    store_->SetUp(up);
}

bool SettingsProvider::IsUp() const
{
    return store_->IsUp();
}

bool SettingsProvider::Preset(const std::string& key, const std::string& value)
{
    return store_->Preset(key, value);
}

}  // namespace Tarvo::Emu
