// The operating system's registry: keys with typed values under predefined root handles.
//
// The calls have the shapes and the error numbers of Windows; there they are the system's own. On a
// system without such a registry each of them gives 120 and does nothing.
//
// Key paths and the names that enumeration gives are narrow texts in the system's code page; names
// and data of values are UTF-16. Sizes of data are bytes, those of names characters without the
// terminator. `result`, `nameSize` and, with `data`, `dataSize` must not be null.
#ifndef LTLIB_PLATFORM_OS_REGISTRY_H
#define LTLIB_PLATFORM_OS_REGISTRY_H

namespace LTLib::Platform {

/// Whether the system has a registry.
[[nodiscard]] bool hasSystemRegistry() noexcept;

namespace OsRegistry {

[[nodiscard]] int closeKey(void* key) noexcept;
[[nodiscard]] int openKey(void* key, const char* subKey, unsigned int options, unsigned int access,
                          void** result) noexcept;
[[nodiscard]] int createKey(void* key, const char* subKey, void** result) noexcept;
[[nodiscard]] int createKeyEx(void* key, const char* subKey, char* keyClass, unsigned int options,
                              unsigned int access, void** result,
                              unsigned int* disposition) noexcept;
[[nodiscard]] int deleteKey(void* key, const char* subKey) noexcept;

/// `type` and `dataSize` may be null; a null `data` asks for type and size alone.
[[nodiscard]] int queryValue(void* key, const char16_t* name, unsigned int* type,
                             unsigned char* data, unsigned int* dataSize) noexcept;
[[nodiscard]] int setValue(void* key, const char16_t* name, unsigned int type,
                           const unsigned char* data, unsigned int dataSize) noexcept;
[[nodiscard]] int deleteValue(void* key, const char* name) noexcept;

[[nodiscard]] int enumKeyEx(void* key, unsigned int index, char* name,
                            unsigned int* nameSize) noexcept;
[[nodiscard]] int enumKey(void* key, unsigned int index, char* name,
                          unsigned int nameSize) noexcept;

/// Gives the data of texts in the system's code page.
[[nodiscard]] int enumValue(void* key, unsigned int index, char* name, unsigned int* nameSize,
                            unsigned int* reserved, unsigned int* type, unsigned char* data,
                            unsigned int* dataSize) noexcept;

}  // namespace OsRegistry
}  // namespace LTLib::Platform

#endif  // LTLIB_PLATFORM_OS_REGISTRY_H
