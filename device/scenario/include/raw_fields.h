#ifndef ZEL_DEVICE_RAW_FIELDS_H
#define ZEL_DEVICE_RAW_FIELDS_H

// The fields of a `raw` line: KIND:VALUE words, checked and bounded before anything is built.
//   s:TEXT      string                 i:N, u:N    int32, uint32 (sent as given, like other numbers)
//   b:0|1       bool                   i32v:N,N,.. u32v:N,N,..  vectors (nothing after ':' = empty)
//   hex:BYTES   raw bytes, two hex digits each

#include <cstddef>
#include <string>

#include "command_args.h"
#include "device_control.h"

namespace Tarvo::Emu {

// Beyond what one parcel holds, so that an oversized request can still be tried.
constexpr size_t kMaxRawElements = 65536;
constexpr size_t kMaxRawBytes = 262144;
constexpr size_t kMaxRawFields = 4096;

// False with a message naming the command.
bool ParseRawField(const CommandArgs& args, const std::string& word, RawField* field, std::string* error);

}  // namespace Tarvo::Emu

#endif  // ZEL_DEVICE_RAW_FIELDS_H
