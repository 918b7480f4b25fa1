// A connection of our own to the X server that outlives the server's death: it just becomes unusable.
#pragma once

#include <X11/Xlib.h>

namespace layer {

class XConnection {
  public:
    XConnection() = default;
    ~XConnection() { Close(); }
    XConnection(const XConnection&) = delete;
    XConnection& operator=(const XConnection&) = delete;

    // Connects to $DISPLAY. The object must stay where it is while the connection lasts.
    bool Open();
    void Close();
    Display* Get() const { return display_; }
    bool Usable() const { return display_ != nullptr && !lost_; }

  private:
    static void OnLost(Display* display, void* self);

    Display* display_ = nullptr;
    bool lost_ = false;
};

}  // namespace layer
