// A library that shows more than it should: what the export check has to notice.
#define SHOWN __attribute__((visibility("default")))

struct Camera {
  float focalLength;
};

SHOWN bool SaveCamera(const char*, Camera) { return true; }

SHOWN extern int leakedNumber;
int leakedNumber = 0;

SHOWN void leakedFunction(int number) { leakedNumber = number; }

// A template's instance is weak, as those of the standard library's and OpenCV's templates.
template <class Number>
SHOWN Number leakedTemplate(Number number) {
  return number + leakedNumber;
}
template int leakedTemplate<int>(int);
