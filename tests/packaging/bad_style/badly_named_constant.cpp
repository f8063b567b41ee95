// A constant with the name of a variable.
constexpr int dozen = 12;

int dozens(int count) { return count / dozen; }
