#ifndef TARVO_APP_CATEGORY_APP_CATEGORY_INTERFACE_H
#define TARVO_APP_CATEGORY_APP_CATEGORY_INTERFACE_H

// The app-category service, system ability APP_CATEGORY_SA_ID: what kind of package each bundle is.
//
// Wire format, GET_CATEGORY (synchronous):
//   data  = interface token APP_CATEGORY_DESCRIPTOR (string16), string vector bundleNames (empty:
//           every installed package), string caller
//   reply = int32 result (CATEGORY_OK on success); on success int32 count, then count times an
//           AppCategoryInfo (its fields, no presence flag). Unknown bundles are left out.
// A wrong token or undecodable data is refused: a non-zero status and no reply.

#include <cstdint>

namespace QuillonServiceClient {

constexpr int32_t APP_CATEGORY_SA_ID = 1910;
constexpr const char16_t* APP_CATEGORY_DESCRIPTOR = u"tarvo.quillon.AppCategory";

enum AppCategoryInterfaceCode : uint32_t {
    GET_CATEGORY = 1,
};

// AppCategoryInfo::packageType values.
constexpr int32_t PACKAGE_TYPE_APP = 1;
constexpr int32_t PACKAGE_TYPE_GAME = 2;

// Results of the service and of CategoryManager.
enum CategoryResult : int32_t {
    CATEGORY_OK = 0,
    CATEGORY_ERR_UNAVAILABLE = 1,   // the service is not obtainable or the request did not arrive
    CATEGORY_ERR_BAD_REPLY = 2,     // the answer could not be decoded
    CATEGORY_ERR_SERVICE_DOWN = 3,  // the service answered that it cannot classify now
};

}  // namespace QuillonServiceClient

#endif  // TARVO_APP_CATEGORY_APP_CATEGORY_INTERFACE_H
