#ifndef TARVO_DATA_SHARE_DATA_SHARE_VALUES_BUCKET_H
#define TARVO_DATA_SHARE_DATA_SHARE_VALUES_BUCKET_H

// Column values to write, as text. Putting a column again replaces its value.
//
// Wire format: int32 count, then per column string column, string value (in the order first put).

#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "parcel.h"

namespace Tarvo::DataShare {

class DataShareValuesBucket {
public:
    void Put(const std::string& column, const std::string& value);
    std::optional<std::string> Get(const std::string& column) const;
    const std::vector<std::pair<std::string, std::string>>& GetAll() const { return values_; }
    bool IsEmpty() const { return values_.empty(); }

    bool Marshalling(Parcel& parcel) const;
    // False (read position unchanged) for missing fields or a repeated column.
    static bool Unmarshalling(Parcel& parcel, DataShareValuesBucket& bucket);

private:
    std::vector<std::pair<std::string, std::string>> values_;
};

}  // namespace Tarvo::DataShare

#endif  // TARVO_DATA_SHARE_DATA_SHARE_VALUES_BUCKET_H
