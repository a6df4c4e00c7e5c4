// Takes of the little room that the loader has for thread-local objects at fixed places.
namespace {

[[gnu::tls_model("initial-exec")]] thread_local char s_taken[16];

}  // namespace

extern "C" [[gnu::visibility("default")]] char* taken() {
  return s_taken;
}
