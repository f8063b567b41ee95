// A branch without braces.
int limited(int x) {
  if (x > 9) return 9;
  return x;
}
