// A DLL with a move that faults on memory which is not aligned to 32 bytes: what the check has to
// notice. Written in the processor's words, because Debian's compiler avoids such moves by itself.
__declspec(dllexport) void readVector(const void* from) {
  asm volatile("vmovdqa (%0), %%ymm0" : : "r"(from) : "xmm0", "memory");
}
