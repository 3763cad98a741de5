#include "data_share_result_set.h"

#include <algorithm>
#include <utility>

namespace Tarvo::DataShare {

DataShareResultSet::DataShareResultSet(std::vector<std::string> columns, std::vector<std::vector<std::string>> rows)
    : columns_(std::move(columns)), rows_(std::move(rows))
{
    for (auto& row : rows_) {
        row.resize(columns_.size());
    }
}

int DataShareResultSet::GoToRow(int position)
{
    if (closed_ || position < 0 || static_cast<size_t>(position) >= rows_.size()) {
        return E_ERROR;
    }
    position_ = position;
    return E_OK;
}

int DataShareResultSet::GetRowCount(int& count)
{
    if (closed_) {
        return E_ERROR;
    }
    count = static_cast<int>(rows_.size());
    return E_OK;
}

int DataShareResultSet::GetColumnCount(int& count)
{
    if (closed_) {
        return E_ERROR;
    }
    count = static_cast<int>(columns_.size());
    return E_OK;
}

int DataShareResultSet::GetAllColumnNames(std::vector<std::string>& columnNames)
{
    if (closed_) {
        return E_ERROR;
    }
    columnNames = columns_;
    return E_OK;
}

int DataShareResultSet::GetColumnIndex(const std::string& columnName, int& columnIndex)
{
    auto it = std::find(columns_.begin(), columns_.end(), columnName);
    if (closed_ || it == columns_.end()) {
        return E_ERROR;
    }
    columnIndex = static_cast<int>(it - columns_.begin());
    return E_OK;
}

int DataShareResultSet::GetString(int columnIndex, std::string& value)
{
    if (closed_ || position_ < 0 || columnIndex < 0 || static_cast<size_t>(columnIndex) >= columns_.size()) {
        return E_ERROR;
    }
    value = rows_[static_cast<size_t>(position_)][static_cast<size_t>(columnIndex)];
    return E_OK;
}

int DataShareResultSet::Close()
{
    closed_ = true;
    rows_.clear();
    return E_OK;
}

bool DataShareResultSet::Marshalling(Parcel& parcel) const
{
    size_t start = parcel.GetWritePosition();
    bool ok = parcel.WriteStringVector(columns_) && parcel.WriteInt32(static_cast<int32_t>(rows_.size()));
    for (size_t i = 0; ok && i < rows_.size(); ++i) {
        ok = parcel.WriteStringVector(rows_[i]);
    }
    if (!ok) {
        parcel.RewindWrite(start);
    }
    return ok;
}

bool DataShareResultSet::Unmarshalling(Parcel& parcel, DataShareResultSet& resultSet)
{
    size_t start = parcel.GetReadPosition();
    DataShareResultSet read;
    int32_t count = 0;
    // Each row takes at least its own count.
    bool ok = parcel.ReadStringVector(&read.columns_) && parcel.ReadInt32(count) && count >= 0 &&
              static_cast<size_t>(count) <= parcel.GetReadableBytes() / sizeof(int32_t);
    for (int32_t i = 0; ok && i < count; ++i) {
        std::vector<std::string> row;
        ok = parcel.ReadStringVector(&row) && row.size() == read.columns_.size();
        read.rows_.push_back(std::move(row));
    }
    if (!ok) {
        parcel.RewindRead(start);
        return false;
    }
    resultSet = std::move(read);
    return true;
}

}  // namespace Tarvo::DataShare
