// A DLL that shows more than it should and less: what the export check has to notice.
struct Camera {
  float focalLength;
};

__declspec(dllexport) bool SaveCamera(const char*, Camera) { return true; }
__declspec(dllexport) void leakedFunction(int) {}
