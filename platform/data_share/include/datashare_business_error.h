#ifndef TARVO_DATA_SHARE_DATASHARE_BUSINESS_ERROR_H
#define TARVO_DATA_SHARE_DATASHARE_BUSINESS_ERROR_H

// Why a data-share operation failed: a code (0 when it did not) and a short text.

#include <cstdint>
#include <string>

namespace Tarvo::DataShare {

class DatashareBusinessError {
public:
    int32_t GetCode() const { return code_; }
    void SetCode(int32_t code) { code_ = code; }
    const std::string& GetMessage() const { return message_; }
    void SetMessage(const std::string& message) { message_ = message; }

private:
    int32_t code_ = 0;
    std::string message_;
};

}  // namespace Tarvo::DataShare

#endif  // TARVO_DATA_SHARE_DATASHARE_BUSINESS_ERROR_H
