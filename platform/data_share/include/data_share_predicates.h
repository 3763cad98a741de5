#ifndef TARVO_DATA_SHARE_DATA_SHARE_PREDICATES_H
#define TARVO_DATA_SHARE_DATA_SHARE_PREDICATES_H

// Which rows an operation concerns: every condition must hold (no condition: every row).
//
// Wire format: int32 count, then per condition int32 operation (EQUAL_TO = 1), string field,
// string value.

#include <cstdint>
#include <string>
#include <vector>

#include "parcel.h"

namespace Tarvo::DataShare {

class DataSharePredicates {
public:
    enum Operation : int32_t { EQUAL_TO = 1 };
    struct Condition {
        Operation operation = EQUAL_TO;
        std::string field;
        std::string value;
        bool operator==(const Condition& other) const = default;
    };

    DataSharePredicates& EqualTo(const std::string& field, const std::string& value);
    const std::vector<Condition>& GetConditions() const { return conditions_; }

    bool Marshalling(Parcel& parcel) const;
    // False (read position unchanged) for missing fields or an unknown operation.
    static bool Unmarshalling(Parcel& parcel, DataSharePredicates& predicates);

private:
    std::vector<Condition> conditions_;
};

}  // namespace Tarvo::DataShare

#endif  // TARVO_DATA_SHARE_DATA_SHARE_PREDICATES_H
