#include "ltlib/component/instance_creation.h"

#include <memory>
#include <sstream>

#include "ltlib/component/dll_loader.h"
#include "lttracer/tracer.h"

namespace {

using LTLib::CreationStep;

// The site by which readers of traces know a failed creation.
constexpr char kSource[] = "iqsunknown";
constexpr long kLine = 163;
constexpr char kTag[] = "TRACE_MODULE_NAME:";

void traceFailure(const iqsID& id) {
  std::stringstream text;
  Tracer::_internal_::Warning(text << "QSLT: Failed to create an instance"
                                   << " : " << (id.text() != nullptr ? id.text() : ""),
                              kSource, kLine, kTag, "iqs_CoCreateInstance");
}

// From here on everything is inlined into both ways to create: the compiler then sees that nobody
// reads the steps of the one that tells none, and leaves them out.
[[gnu::always_inline]] inline iqsDllLoader::CreateUnknown factoryOf(const iqsID& id,
                                                                    std::string& error) {
  char* text = nullptr;
  const iqsDllLoader::CreateUnknown factory = iqsDllLoader::iqsGetCreateInstance(id, &text);
  const std::unique_ptr<char[]> owner(text);
  // Without a text the caller's stays: an empty one would hide what it collected before.
  if (text != nullptr) {
    error = text;
  }
  return factory;
}

// The new object; null when there is none, and then a negative `result` of the factory is kept.
[[gnu::always_inline]] inline iqsCUnknown* make(iqsDllLoader::CreateUnknown factory,
                                                iqsUnknown* outer, QSResult& result,
                                                std::string& error, CreationStep& step) {
  iqsCUnknown* object = nullptr;
  QSResult made = LTLib::kSuccess;
  step = CreationStep::kFactory;
  try {
    made = factory(outer, &object);
  } catch (const QSException& failure) {
    error = failure.What();
    return nullptr;
  } catch (const std::exception& failure) {
    error = failure.what();
    return nullptr;
  }
  if (made < 0) {
    result = made;
    return nullptr;
  }
  // A factory that reports success and stores nothing is told from one that failed by the step.
  step = CreationStep::kObject;
  return object;
}

// Completes the object and hands out its public face. The factory's reference is given back either
// way, which ends an object that did not succeed.
[[gnu::always_inline]] inline QSResult handOut(iqsCUnknown& object, void** out,
                                               CreationStep& step) {
  step = CreationStep::kInit;
  QSResult result = object.Init();
  if (result >= 0) {
    step = CreationStep::kFace;
    result = object.InnerQueryInterface(LTLib::kUnknownID, out);
  }
  if (result >= 0) {
    step = CreationStep::kRelease;
  }
  object.InnerRelease();
  return result;
}

[[gnu::always_inline]] inline QSResult create(iqsUnknown* outer, const iqsID& id, void** out,
                                              std::string& error, CreationStep& step) {
  step = CreationStep::kLoad;
  // What is compared is the class, by contract: an outer goes with one class alone.
  if (outer != nullptr && !(id == LTLib::kUnknownID)) {
    return LTLib::kNotAvailable;
  }
  const iqsDllLoader::CreateUnknown factory = factoryOf(id, error);
  QSResult result = LTLib::kNotAvailable;
  iqsCUnknown* const object =
      factory != nullptr ? make(factory, outer, result, error, step) : nullptr;
  if (object == nullptr) {
    traceFailure(id);
    return result;
  }
  return handOut(*object, out, step);
}

}  // namespace

QSResult LTLib::createInstance(iqsUnknown* outer, const iqsID& id, void** out, std::string& error,
                               CreationStep& step) {
  return create(outer, id, out, error, step);
}

QSResult iqs_CoCreateInstance(iqsUnknown* outer, const iqsID& id, void** out, std::string& error) {
  CreationStep step;
  return create(outer, id, out, error, step);
}

QSResult iqs_CoCreateInstance(iqsUnknown* outer, const iqsID& id, void** out) {
  std::string error;
  return iqs_CoCreateInstance(outer, id, out, error);
}
