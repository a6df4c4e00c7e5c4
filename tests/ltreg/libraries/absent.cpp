// Stands where no loader looks.
int ltregTestAbsent();

int ltregTestAbsent() {
  return 1;
}
