#ifndef TARVO_CONFIG_POLICY_CONFIG_POLICY_UTILS_H
#define TARVO_CONFIG_POLICY_CONFIG_POLICY_UTILS_H

// Lookup of configuration files across the configuration folders (see config_folders.h): a file
// "<folder>/<pathSuffix>" in a later folder takes precedence over the same file in an earlier one.

#ifdef __cplusplus
extern "C" {
#endif

// Fills buf with the path of the highest-priority regular file "<folder>/<pathSuffix>" that exists
// and returns buf. Returns nullptr, leaving buf untouched, when no folder has the file, when that
// path with its terminating 0 does not fit in bufLength bytes (lower-priority copies are not tried
// then), or when an argument is null or empty.
char* GetOneCfgFile(const char* pathSuffix, char* buf, unsigned int bufLength);

#ifdef __cplusplus
}
#endif

#endif  // TARVO_CONFIG_POLICY_CONFIG_POLICY_UTILS_H
