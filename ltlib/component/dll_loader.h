/// \file
/// \brief The loader of component libraries: from a class identifier to a loaded library and a
/// factory.
///
/// On the machine root, below the registry key that the variable CLASSID names, each class has a
/// key of its identifier, whose text value "InprocServer" is the path of the library's file; the
/// identifier is expanded as part of the key's path, the file's path is not. No symbol of a library
/// is looked up: while it loads, its static Registrar objects hand over the factories of its
/// classes, and when it goes their destructors take them back. What is known of a class is kept in
/// a record, which stays for the life of the process; the file is read from the registry once, a
/// class without an entry is asked for again each time.
///
/// A class registers one of two kinds of factory, and is created by the route of that kind alone;
/// by the other it has no factory:
///
/// | form    | the factory makes            | route                                         |
/// |---------|------------------------------|-----------------------------------------------|
/// | unknown | a component that counts      | iqs_CoCreateInstance; nothing is unloaded     |
/// | plain   | any object                   | Load, CreateInstance, ReleaseInstance, Unload |
///
/// | record   | count     | factory                       | how it is reached                 |
/// |----------|-----------|-------------------------------|-----------------------------------|
/// | known    | 0         | none                          | first look-up; a load that failed |
/// | filled   | 0         | set                           | library came in for another class |
/// | loaded   | 1 or more | set, if the library gave one  | Load                              |
/// | unloaded | 0         | none once the library is gone | last Unload                       |
///
/// Threads: every operation may be called from any thread at any time. Libraries are loaded and
/// unloaded by one thread at a time, and plain objects created and released by one thread at a
/// time, with the library's static objects, factories and release functions running under the
/// loader's locks: they may use the loader themselves, but must not wait for another thread that
/// does. A variable resolver runs under the lock of the look-up and must not use the loader. Load
/// of a class that is loaded already waits for nobody. The process does not end while a thread is
/// in a plain factory or a release function: the registrars that go then wait for it.
///
/// Forks: the child has the records and libraries as they stood, and may use the loader. While
/// other threads load, unload, or create and release by the plain route a fork waits, but no longer
/// than a second: what such a thread is about then is left undone in the child, which must not load
/// a library that was just coming or going. Static objects, factories and release functions may
/// fork.
///
/// Ownership: records are the loader's. A failure text is made by `new char[]` and belongs to the
/// caller, who frees it with `delete[]`. Identifiers are copied.
///
/// Failure: a null result. What the registry, a factory, a release function or a static object of a
/// library throws passes through, with all locks of this loader released. No trace.
///
/// A library whose static object threw has failed. On Windows the system's loader stops the
/// exception, so that the Load gives null, and the next one tries again. On Linux the Load throws
/// it, and each further one of the library's classes fails: the library stays in memory, where the
/// exception has its code. If it was not built by ltlib_add_component, the exception leaves the
/// system's loader locked for all threads but that one. On them no Load brings a library in and no
/// Unload frees one from then on, and whatever calls the system's loader there waits for ever, the
/// end of the process included.
#ifndef LTLIB_COMPONENT_DLL_LOADER_H
#define LTLIB_COMPONENT_DLL_LOADER_H

#include "ltlib/component/iqsunknown.h"
#include "ltlib/export.h"
#include "ltlib/foundation/kqsresult.h"

/// The loader of the process; there are no objects of it.
class LTLIB_EXPORT iqsDllLoader {
 public:
  /// The record of a class, for callers a pointer without contents.
  struct FactoryDll;

  /// Makes a component and stores it, with one reference for the caller, behind `out`.
  using CreateUnknown = QSResult (*)(iqsUnknown* outer, iqsCUnknown** out);
  using CreatePlain = void* (*)();
  using ReleasePlain = void (*)(void* instance);

  class Registrar;

  iqsDllLoader() = delete;

  /// Loads the library of a class, or counts one more load of it. Null, and a text of at most 1023
  /// characters behind `error`, when the class has no entry or its library does not load; an empty
  /// path never loads. A null `error` gets no text, and so does a null identifier. A failure to
  /// load keeps a text that `error` holds already; a missing entry replaces it and does not free it.
  static FactoryDll* Load(const iqsID& id, char** error);

  /// Undoes one Load; with the last one the library is freed, if no other class holds it. Nothing
  /// happens to a record that is not loaded, and to null. After 2^32 - 1 loads that nobody undid
  /// the library stays for good.
  static void Unload(FactoryDll* factory);

  /// A new object of a class of the plain form; null for any other class, and for null.
  static void* CreateInstance(FactoryDll* factory);

  /// Hands an object of the plain form back to its class. Nothing happens without a release
  /// function, and when either is null.
  static void ReleaseInstance(FactoryDll* factory, void* instance);

  /// As Load, which nobody undoes, and then the factory of a class of the unknown form; null when
  /// the load fails, and without a text when the library registered none of that form.
  static CreateUnknown iqsGetCreateInstance(const iqsID& id, char** error);
};

/// Offers a class by being constructed, as a static object of a component library. The class needs
/// its entry in the registry by then, otherwise nothing is offered; nor is it with a null
/// identifier or a null factory. Nothing is thrown. Of two objects for one class the later one
/// counts, and the end of either takes the class back.
class LTLIB_EXPORT iqsDllLoader::Registrar {
 public:
  Registrar(const iqsID& id, CreateUnknown create);
  Registrar(const iqsID& id, CreatePlain create, ReleasePlain release);
  ~Registrar();
  Registrar(const Registrar&) = delete;
  Registrar& operator=(const Registrar&) = delete;

 private:
  // One of the two factories is null.
  void Register(const iqsID& id, CreateUnknown createUnknown, CreatePlain createPlain,
                ReleasePlain release);

  FactoryDll* m_factory = nullptr;
};

#endif  // LTLIB_COMPONENT_DLL_LOADER_H
