#include "registration/window_closer_linux.h"

#include <dlfcn.h>

#include <cstdlib>
#include <cstring>
#include <string>

namespace {

// As in xcb/xcb.h, which need not be installed: the library is loaded at run time.
struct Cookie {
  unsigned sequence;
};
struct AtomReply {
  std::uint8_t header[8];
  std::uint32_t atom;
};

// A ClientMessage as it is sent: WM_PROTOCOLS with WM_DELETE_WINDOW.
struct CloseEvent {
  std::uint8_t type = 33;
  std::uint8_t format = 32;
  std::uint16_t sequence = 0;
  std::uint32_t window = 0;
  std::uint32_t protocols = 0;
  std::uint32_t data[5] = {};
};
static_assert(sizeof(CloseEvent) == 32, "events have 32 bytes");

template <typename Function>
Function* function(void* library, const char* name) {
  return reinterpret_cast<Function*>(dlsym(library, name));
}

}  // namespace

bool askToClose(std::uint32_t window) {
  void* const library = dlopen("libxcb.so.1", RTLD_LAZY | RTLD_LOCAL);
  if (library == nullptr) {
    return false;
  }
  const auto connect = function<void*(const char*, int*)>(library, "xcb_connect");
  const auto hasError = function<int(void*)>(library, "xcb_connection_has_error");
  const auto intern =
      function<Cookie(void*, std::uint8_t, std::uint16_t, const char*)>(library, "xcb_intern_atom");
  const auto reply = function<AtomReply*(void*, Cookie, void*)>(library, "xcb_intern_atom_reply");
  const auto send =
      function<Cookie(void*, std::uint8_t, std::uint32_t, std::uint32_t, const char*)>(
          library, "xcb_send_event");
  const auto flush = function<int(void*)>(library, "xcb_flush");
  const auto disconnect = function<void(void*)>(library, "xcb_disconnect");

  void* const connection = connect(nullptr, nullptr);
  if (hasError(connection) != 0) {
    return false;
  }
  const auto atomOf = [&](const std::string& name) {
    AtomReply* const answer = reply(
        connection, intern(connection, 0, static_cast<std::uint16_t>(name.size()), name.c_str()),
        nullptr);
    const std::uint32_t atom = answer != nullptr ? answer->atom : 0;
    std::free(answer);
    return atom;
  };
  CloseEvent event;
  event.window = window;
  event.protocols = atomOf("WM_PROTOCOLS");
  event.data[0] = atomOf("WM_DELETE_WINDOW");
  char bytes[sizeof(CloseEvent)];
  std::memcpy(bytes, &event, sizeof bytes);
  send(connection, 0, window, 0, bytes);
  flush(connection);
  disconnect(connection);
  return event.protocols != 0 && event.data[0] != 0;
}
