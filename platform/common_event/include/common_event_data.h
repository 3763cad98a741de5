#ifndef TARVO_COMMON_EVENT_COMMON_EVENT_DATA_H
#define TARVO_COMMON_EVENT_COMMON_EVENT_DATA_H

// One common event: the want (its action names the event), a result code and a data string.
//
// Wire format: the want (want.h), int32 code, string data.

#include <cstdint>
#include <string>

#include "parcel.h"
#include "want.h"

namespace Tarvo::EventFwk {

class CommonEventData {
public:
    CommonEventData() = default;
    explicit CommonEventData(const AAFwk::Want& want);
    CommonEventData(const AAFwk::Want& want, int32_t code, const std::string& data);

    void SetWant(const AAFwk::Want& want) { want_ = want; }
    const AAFwk::Want& GetWant() const { return want_; }
    void SetCode(int32_t code) { code_ = code; }
    int32_t GetCode() const { return code_; }
    void SetData(const std::string& data) { data_ = data; }
    std::string GetData() const { return data_; }

    bool operator==(const CommonEventData& other) const = default;

    bool Marshalling(Parcel& parcel) const;
    // False (read position unchanged, data untouched) when the fields are not all there.
    static bool Unmarshalling(Parcel& parcel, CommonEventData& data);

private:
    AAFwk::Want want_;
    int32_t code_ = 0;
    std::string data_;
};

}  // namespace Tarvo::EventFwk

#endif  // TARVO_COMMON_EVENT_COMMON_EVENT_DATA_H
