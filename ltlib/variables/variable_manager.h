/// \file
/// \brief The process-wide table of configuration variables, and the expansion of references to
/// them.
///
/// A variable has a name and a raw value. Expansion replaces each reference, a name between two
/// percent signs, by the value, leftmost first, and goes on in what it put in, so that values may
/// hold references. What counts is the table at the moment of the expansion. There is no escape for
/// a percent sign: two in a row are a reference to the variable with the empty name.
///
/// The first expansion of a process completes the table: the first word of the file config.dat
/// beside the library becomes the value of CurrentConfig, unless the program has set that already,
/// and the values of the registry key that PublicVariables names are added. Who comes first defines
/// a name: the library's own table, then tables registered before the first expansion, then the
/// public variables, then tables registered later. Only SetVariable changes a value. A public
/// variable whose name has 200 bytes or more ends the load: neither it nor those behind it are
/// added. Where the registry throws, the exception reaches the caller of that expansion, the load
/// is not tried again, and later expansions go by what was defined until then.
///
/// Threads: every operation may be called from any thread at any time. An expansion sees the table
/// of one moment, unless resolvers are registered: these are called with no lock held, may use the
/// manager themselves, and the table is looked at anew for each replacement. One thread runs the
/// load of the first expansion; others that expand meanwhile go on with what is defined so far.
///
/// Forks: the child has the table as it stood, and may use it. A load that another thread was
/// running is the child's next expansion's.
///
/// Ownership: names and values are copied. Resolvers are borrowed.
///
/// Failure: results only, 0 on success. Exceptions of resolvers and of the registry pass through,
/// and so does std::bad_alloc.
///
/// Names compare as exact bytes. An empty name and an empty value are legal.
#ifndef LTLIB_VARIABLES_VARIABLE_MANAGER_H
#define LTLIB_VARIABLES_VARIABLE_MANAGER_H

#include <string>

#include "ltlib/export.h"
#include "ltlib/foundation/kqsresult.h"

/// A row of a variable table; a row whose name is null ends the table.
struct QSREGISTRYVARIABLE {
  const char* name;
  const char* value;  // raw; never null in a row that has a name
};

/// A hook that may change what a variable is replaced by.
class QSVariableResolver {
 public:
  /// Called for each replacement of a reference to `name`, whose stored raw value is `value`.
  /// `replacement` holds the stored value, or what an earlier resolver made of it, and may be
  /// changed. A negative result passes on to the next resolver; any other ends the chain.
  virtual QSResult Resolve(const std::string& name, const std::string& value,
                           std::string& replacement) = 0;

 protected:
  ~QSVariableResolver() = default;
};

/// The table of variables, with its resolvers.
class LTLIB_EXPORT QSConfigVariableManager {
 public:
  /// The manager of the process, made by the first call; null after the teardown at the end of
  /// the process.
  static QSConfigVariableManager* GetInstance();

  /// The library alone deletes the manager, at the end of the process.
  virtual ~QSConfigVariableManager();

  /// Defines a new variable. 0x80004005 when the name holds a '%', 0x80360001 when it is defined
  /// already; nothing changes then.
  virtual QSResult AddVariable(const std::string& name, const std::string& value) = 0;

  /// Defines the rows of a table in their order. A row whose name holds a '%' is skipped. A row
  /// whose name is defined already ends the operation with 0x80360001: the rows before it stay
  /// defined, and those behind it are dropped, new names among them too. A null table counts as an
  /// empty one.
  virtual QSResult AddVariables(QSREGISTRYVARIABLE* table) = 0;

  /// Changes the value of a defined variable; 0x80360002 when it is not defined. After a change of
  /// CurrentConfig the file config.dat is no longer read.
  virtual QSResult SetVariable(const std::string& name, const std::string& value) = 0;

  /// Deletes a defined variable; 0x80360002 when it is not defined.
  virtual QSResult RemoveVariable(const std::string& name) = 0;

  /// Replaces all references in place. 0x80004005 when a percent sign has no partner, a variable
  /// is not defined, a replacement is the bare name of its variable, a reference leads back to
  /// itself, the text would grow past 256 MiB, or it takes more than 10,000,000 replacements; the
  /// text then keeps the replacements made so far. Without resolvers what a variable expands to is
  /// worked out once, and each repetition counts as one replacement. Where resolvers take part, a
  /// reference that keeps leading back to itself is given 10000 rounds, since their answers may
  /// change.
  virtual QSResult ExpandString(std::string& text) = 0;

  /// Stores in `defined` whether the name is defined so far. Always 0.
  virtual QSResult IsVariableDefined(const std::string& name, bool& defined) = 0;

  /// Adds a resolver behind the others: 0x80360001 when it is there already, 0x8004102E when it is
  /// null. It has to live until it is removed and no expansion that began before that is left.
  virtual QSResult AddResolver(QSVariableResolver* resolver) = 0;

  /// Removes a resolver; 0x80360002 when it is not there.
  virtual QSResult RemoveResolver(QSVariableResolver* resolver) = 0;

 protected:
  QSConfigVariableManager() = default;
  QSConfigVariableManager(const QSConfigVariableManager&) = delete;
  QSConfigVariableManager& operator=(const QSConfigVariableManager&) = delete;
};

/// Registers a table by being constructed; in practice a static object of a module.
class LTLIB_EXPORT QSVariableRegistrar {
 public:
  /// Makes the manager if need be and gives it the table, whose names that are defined already
  /// keep their values. The variables stay defined when this object goes. Does nothing after the
  /// teardown.
  explicit QSVariableRegistrar(QSREGISTRYVARIABLE* table);
};

/// QSConfigVariableManager::ExpandString for callers without the manager; 0x80004005 after the
/// teardown at the end of the process.
LTLIB_EXPORT QSResult QSExpandString(std::string& text);

#endif  // LTLIB_VARIABLES_VARIABLE_MANAGER_H
