// A function of a library that is missing at run time.
#ifndef LTLIB_TESTS_LTREG_LIBRARIES_ABSENT_H
#define LTLIB_TESTS_LTREG_LIBRARIES_ABSENT_H

int ltregTestAbsent();

#endif  // LTLIB_TESTS_LTREG_LIBRARIES_ABSENT_H
