// Calls a function that is missing at run time: of a library that the loader does not find, or one
// that no library has.
int ltregTestAbsent();

const int kValue = ltregTestAbsent();
