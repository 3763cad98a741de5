#ifndef TARVO_DATA_SHARE_URI_H
#define TARVO_DATA_SHARE_URI_H

// A resource name such as "datashare:///authority/path?query", kept as the text it was made from.

#include <string>

namespace Tarvo {

class Uri {
public:
    explicit Uri(std::string uriString);

    const std::string& ToString() const { return uriString_; }
    bool operator==(const Uri& other) const = default;

private:
    std::string uriString_;
};

}  // namespace Tarvo

#endif  // TARVO_DATA_SHARE_URI_H
