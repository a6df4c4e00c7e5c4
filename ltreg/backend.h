// Which registry manager serves a request.
#ifndef LTREG_BACKEND_H
#define LTREG_BACKEND_H

#include <string>

#include "ltlib/ltlib.h"
#include "ltreg/request.h"

namespace ltreg {

/// The manager that all programs get, or with --store the file backend, which needs no marker.
class Backend {
 public:
  /// With --store the store becomes the root's file in this process. Throws Failure for a store
  /// without a name.
  Backend(const Request& request, enumRegRoot root);

  [[nodiscard]] QSRegistryManager& manager() const { return *m_manager; }

  /// Whether roots lie in store files.
  [[nodiscard]] bool onFiles() const { return m_onFiles; }

  /// The store file of a root; empty unless roots lie in store files. Throws Failure where the
  /// environment gives the root no file.
  [[nodiscard]] std::string storeOf(enumRegRoot root) const;

 private:
  QSRegistryManager* m_manager = nullptr;
  bool m_onFiles = true;
};

}  // namespace ltreg

#endif  // LTREG_BACKEND_H
