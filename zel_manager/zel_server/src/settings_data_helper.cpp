#include "settings_data_helper.h"

#include <vector>

#include "data_share_predicates.h"
#include "data_share_values_bucket.h"
#include "if_system_ability_manager.h"
#include "iservice_registry.h"
#include "uri.h"
#include "zel_log.h"
#include "zel_manager_service.h"

namespace Tarvo::Vantel {
namespace {
const std::string SETTINGS_DATA_URI = "datashare:///com.tarvo.settingsdata/entry/settingsdata/SETTINGSDATA?Proxy=true";
const std::string SETTINGS_DATA_EXT_URI = "datashare:///com.tarvo.settingsdata.DataAbility";
const std::string SETTINGS_DATA_COLUMN_KEYWORD = "KEYWORD";
const std::string SETTINGS_DATA_COLUMN_VALUE = "VALUE";
constexpr int32_t DATA_SHARE_FAILED = -1;
}  // namespace

SettingsDataHelper::SettingsDataHelper() : dataShareHelper_(CreateDataShareHelper()) {}

std::shared_ptr<DataShare::DataShareHelper> SettingsDataHelper::CreateDataShareHelper()
{
    sptr<ISystemAbilityManager> samgr = SystemAbilityManagerClient::GetInstance().GetSystemAbilityManager();
    if (samgr == nullptr) {
        ZEL_LOGI("SettingsDataHelper GetSystemAbilityManager failed.");
        return nullptr;
    }
    // The provider admits callers by their own service object.
    sptr<IRemoteObject> remoteObj = samgr->GetSystemAbility(ZelManagerService::ZEL_MANAGER_SERVICE_ID);
    if (remoteObj == nullptr) {
        ZEL_LOGI("SettingsDataHelper GetSystemAbility Service Failed.");
        return nullptr;
    }
    return DataShare::DataShareHelper::Creator(remoteObj, SETTINGS_DATA_URI, SETTINGS_DATA_EXT_URI);
}

int32_t SettingsDataHelper::Query(const std::string& key, std::string& value)
{
    if (dataShareHelper_ == nullptr) {
        ZEL_LOGI("dataShareHelper_ is nullptr");
        return -1;
    }
    DataShare::DataSharePredicates predicates;
    predicates.EqualTo(SETTINGS_DATA_COLUMN_KEYWORD, key);
    std::vector<std::string> columns;
    Uri uri(SETTINGS_DATA_URI);
    auto resultSet = dataShareHelper_->Query(uri, predicates, columns);
    if (resultSet == nullptr) {
        ZEL_LOGI("DataShareHelper query error, result is null");
        return -1;
    }
    if (resultSet->GoToFirstRow() != 0) {
        ZEL_LOGI("DataShareHelper query failed,go to first row error");
        resultSet->Close();
        return -1;
    }
    int columnIndex = 0;
    resultSet->GetColumnIndex(SETTINGS_DATA_COLUMN_VALUE, columnIndex);
    resultSet->GetString(columnIndex, value);
    resultSet->Close();
    ZEL_LOGI("DataShareHelper query success,value[%{public}s]", value.c_str());
    return 0;
}

int32_t SettingsDataHelper::Insert(const std::string& key, const std::string& value)
{
    if (dataShareHelper_ == nullptr) {
        ZEL_LOGI("dataShareHelper_ is nullptr");
        return -1;
    }
    DataShare::DataShareValuesBucket bucket;
    bucket.Put(SETTINGS_DATA_COLUMN_KEYWORD, key);
    bucket.Put(SETTINGS_DATA_COLUMN_VALUE, value);
    Uri uri(SETTINGS_DATA_URI);
    int32_t result = dataShareHelper_->Insert(uri, bucket);
    // Only the provider's -1 is a failure; any other result is its row id.
    if (result == DATA_SHARE_FAILED) {
        ZEL_LOGI("DataShareHelper insert failed, insert result:%{public}d", result);
        return -1;
    }
    dataShareHelper_->NotifyChange(uri);
    ZEL_LOGI("DataShareHelper insert success");
    return 0;
}

int32_t SettingsDataHelper::Update(const std::string& key, const std::string& value)
{
    if (dataShareHelper_ == nullptr) {
        ZEL_LOGI("dataShareHelper_ is nullptr");
        return -1;
    }
    std::string current;
    if (Query(key, current) == -1) {
        return Insert(key, value);
    }
    DataShare::DataShareValuesBucket bucket;
    bucket.Put(SETTINGS_DATA_COLUMN_VALUE, value);
    DataShare::DataSharePredicates predicates;
    predicates.EqualTo(SETTINGS_DATA_COLUMN_KEYWORD, key);
    Uri uri(SETTINGS_DATA_URI);
    if (dataShareHelper_->Update(uri, predicates, bucket) == DATA_SHARE_FAILED) {
        return -1;
    }
    dataShareHelper_->NotifyChange(uri);
    ZEL_LOGI("DataShareHelper update success");
    return 0;
}

}  // namespace Tarvo::Vantel
