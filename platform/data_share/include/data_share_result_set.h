#ifndef TARVO_DATA_SHARE_DATA_SHARE_RESULT_SET_H
#define TARVO_DATA_SHARE_DATA_SHARE_RESULT_SET_H

// The rows a query found, all cells as text, with a cursor that starts before the first row.
//
// Contract: every operation returns E_OK or E_ERROR (no row at the cursor, an index out of range,
// or a closed set); outputs are changed only on E_OK. Close() is final. Not thread-safe.
//
// Wire format: string vector column names, int32 row count, then per row a string vector of
// exactly one cell per column.

#include <string>
#include <vector>

#include "parcel.h"

namespace Tarvo::DataShare {

class DataShareResultSet {
public:
    static constexpr int E_OK = 0;
    static constexpr int E_ERROR = -1;

    DataShareResultSet() = default;
    // A row with too few cells is padded with empty ones, one with too many is cut.
    DataShareResultSet(std::vector<std::string> columns, std::vector<std::vector<std::string>> rows);

    int GoToFirstRow() { return GoToRow(0); }
    int GoToNextRow() { return GoToRow(position_ + 1); }
    int GoToRow(int position);
    int GetRowCount(int& count);
    int GetColumnCount(int& count);
    int GetAllColumnNames(std::vector<std::string>& columnNames);
    int GetColumnIndex(const std::string& columnName, int& columnIndex);
    // The cell of the current row.
    int GetString(int columnIndex, std::string& value);
    int Close();
    bool IsClosed() const { return closed_; }

    bool Marshalling(Parcel& parcel) const;
    // False (read position unchanged) for missing fields or a row of the wrong width.
    static bool Unmarshalling(Parcel& parcel, DataShareResultSet& resultSet);

private:
    std::vector<std::string> columns_;
    std::vector<std::vector<std::string>> rows_;
    int position_ = -1;
    bool closed_ = false;
};

}  // namespace Tarvo::DataShare

#endif  // TARVO_DATA_SHARE_DATA_SHARE_RESULT_SET_H
