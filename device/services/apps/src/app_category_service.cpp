#include "app_category_service.h"

#include "app_category_interface.h"
#include "app_category_stub.h"

namespace Tarvo::Emu {

static_assert(AppCategoryService::SA_ID == QuillonServiceClient::APP_CATEGORY_SA_ID);

AppCategoryService::AppCategoryService(DeviceContext& ctx) : ctx_(ctx) {}

AppCategoryService::~AppCategoryService() = default;

void AppCategoryService::Start()
{
    if (process_ != nullptr) {
        return;
    }
    stub_ = ctx_.LaunchService<AppCategoryStub>("app_category", SA_ID, process_, ctx_.Catalog());
    stub_->SetUp(up_);
}

void AppCategoryService::SetUp(bool up)
{
    up_ = up;
    if (stub_ != nullptr) {
        stub_->SetUp(up);
    }
}

}  // namespace Tarvo::Emu
