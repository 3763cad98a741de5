#include "data_share_helper.h"

#include <utility>

#include "i_data_share_provider.h"
#include "system_ability_cache.h"

namespace Tarvo::DataShare {
namespace {
constexpr int FAILED = -1;

void SetError(DatashareBusinessError* businessError, int32_t code, const char* message)
{
    if (businessError != nullptr) {
        businessError->SetCode(code);
        businessError->SetMessage(message);
    }
}
}  // namespace

std::shared_ptr<DataShareHelper> DataShareHelper::Creator(const sptr<IRemoteObject>& token, const std::string& strUri,
                                                          const std::string& extUri)
{
    if (token == nullptr) {
        return nullptr;
    }
    // Never destroyed: the kept proxies must not go during static destruction.
    static auto* client = new SystemAbilityClient<IDataShareProvider>(DATA_SHARE_PROVIDER_SA_ID);
    sptr<IDataShareProvider> provider = client->Get();
    if (provider == nullptr) {
        return nullptr;
    }
    sptr<IRemoteObject> connectionObject = provider->Connect(strUri, extUri, token);
    sptr<IDataShareConnection> connection =
        connectionObject != nullptr ? iface_cast<IDataShareConnection>(connectionObject) : nullptr;
    if (connection == nullptr) {
        return nullptr;
    }
    return std::shared_ptr<DataShareHelper>(new DataShareHelper(std::move(connection)));
}

DataShareHelper::DataShareHelper(sptr<IDataShareConnection> connection) : connection_(std::move(connection)) {}

sptr<IDataShareConnection> DataShareHelper::Connection()
{
    std::lock_guard<std::mutex> lock(mutex_);
    return connection_;
}

std::shared_ptr<DataShareResultSet> DataShareHelper::Query(Uri& uri, const DataSharePredicates& predicates,
                                                           std::vector<std::string>& columns,
                                                           DatashareBusinessError* businessError)
{
    sptr<IDataShareConnection> connection = Connection();
    if (connection == nullptr) {
        SetError(businessError, IDataShareConnection::E_ERROR, "connection released");
        return nullptr;
    }
    int32_t status = IDataShareConnection::E_ERROR;
    std::shared_ptr<DataShareResultSet> resultSet = connection->Query(uri.ToString(), predicates, columns, status);
    if (resultSet == nullptr) {
        SetError(businessError, status != IDataShareConnection::E_OK ? status : IDataShareConnection::E_ERROR,
                 "query failed");
        return nullptr;
    }
    SetError(businessError, IDataShareConnection::E_OK, "");
    return resultSet;
}

int DataShareHelper::Insert(Uri& uri, const DataShareValuesBucket& value)
{
    sptr<IDataShareConnection> connection = Connection();
    return connection != nullptr ? connection->Insert(uri.ToString(), value) : FAILED;
}

int DataShareHelper::Update(Uri& uri, const DataSharePredicates& predicates, const DataShareValuesBucket& value)
{
    sptr<IDataShareConnection> connection = Connection();
    return connection != nullptr ? connection->Update(uri.ToString(), predicates, value) : FAILED;
}

void DataShareHelper::NotifyChange(const Uri& uri)
{
    sptr<IDataShareConnection> connection = Connection();
    if (connection != nullptr) {
        connection->NotifyChange(uri.ToString());
    }
}

void DataShareHelper::RegisterObserver(const Uri& uri, const sptr<AAFwk::IDataAbilityObserver>& dataObserver)
{
    sptr<IDataShareConnection> connection = Connection();
    if (connection != nullptr && dataObserver != nullptr) {
        connection->RegisterObserver(uri.ToString(), dataObserver->AsObject());
    }
}

void DataShareHelper::UnregisterObserver(const Uri& uri, const sptr<AAFwk::IDataAbilityObserver>& dataObserver)
{
    sptr<IDataShareConnection> connection = Connection();
    if (connection != nullptr && dataObserver != nullptr) {
        connection->UnregisterObserver(uri.ToString(), dataObserver->AsObject());
    }
}

bool DataShareHelper::Release()
{
    sptr<IDataShareConnection> connection;
    {
        std::lock_guard<std::mutex> lock(mutex_);
        connection = std::move(connection_);
    }
    return connection != nullptr && connection->Release() == IDataShareConnection::E_OK;
}

}  // namespace Tarvo::DataShare
