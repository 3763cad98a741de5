#ifndef TARVO_APP_CATEGORY_CATEGORY_MANAGER_H
#define TARVO_APP_CATEGORY_CATEGORY_MANAGER_H

// Asks the app-category service, synchronously, for the categories of packages.

#include <cstdint>
#include <string>
#include <vector>

#include "app_category_info.h"

namespace QuillonServiceClient {

class CategoryManager {
public:
    // CATEGORY_OK with `infos` replaced by the service's answer (an empty `bundleNames` asks for
    // every installed package); otherwise a non-zero CategoryResult and `infos` untouched.
    // `bundleNames` is only read.
    static int32_t GetCategoryFromSystem(std::vector<std::string>& bundleNames, std::vector<AppCategoryInfo>& infos,
                                         std::string caller);
};

}  // namespace QuillonServiceClient

#endif  // TARVO_APP_CATEGORY_CATEGORY_MANAGER_H
