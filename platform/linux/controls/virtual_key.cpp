#include "platform/linux/controls/virtual_key.h"

namespace layer {

namespace {

struct KeyNumber {
    int Key;
    WORD Number;
};

constexpr KeyNumber Named[] = {
    {Qt::Key_Backspace, 0x08}, {Qt::Key_Tab, 0x09},      {Qt::Key_Backtab, 0x09},    {Qt::Key_Return, 0x0D},
    {Qt::Key_Enter, 0x0D},     {Qt::Key_Shift, 0x10},    {Qt::Key_Control, 0x11},    {Qt::Key_Alt, 0x12},
    {Qt::Key_Pause, 0x13},     {Qt::Key_CapsLock, 0x14}, {Qt::Key_Escape, 0x1B},     {Qt::Key_Space, 0x20},
    {Qt::Key_PageUp, 0x21},    {Qt::Key_PageDown, 0x22}, {Qt::Key_End, 0x23},        {Qt::Key_Home, 0x24},
    {Qt::Key_Left, 0x25},      {Qt::Key_Up, 0x26},       {Qt::Key_Right, 0x27},      {Qt::Key_Down, 0x28},
    {Qt::Key_Print, 0x2C},     {Qt::Key_Insert, 0x2D},   {Qt::Key_Delete, 0x2E},     {Qt::Key_Meta, 0x5B},
    {Qt::Key_Menu, 0x5D},      {Qt::Key_NumLock, 0x90},  {Qt::Key_ScrollLock, 0x91}, {Qt::Key_Plus, 0xBB},
    {Qt::Key_Comma, 0xBC},     {Qt::Key_Minus, 0xBD},    {Qt::Key_Period, 0xBE},
};

constexpr KeyNumber Keypad[] = {
    {Qt::Key_Asterisk, 0x6A}, {Qt::Key_Plus, 0x6B},  {Qt::Key_Minus, 0x6D},
    {Qt::Key_Period, 0x6E},   {Qt::Key_Comma, 0x6E}, {Qt::Key_Slash, 0x6F},
};

}  // namespace

WORD VirtualKey(const QKeyEvent& event) {
    const int key = event.key();
    const bool onKeypad = event.modifiers().testFlag(Qt::KeypadModifier);
    if (key >= Qt::Key_0 && key <= Qt::Key_9) {
        return static_cast<WORD>((onKeypad ? 0x60 : 0x30) + (key - Qt::Key_0));
    }
    if (key >= Qt::Key_A && key <= Qt::Key_Z) {
        return static_cast<WORD>(0x41 + (key - Qt::Key_A));
    }
    if (key >= Qt::Key_F1 && key <= Qt::Key_F24) {
        return static_cast<WORD>(0x70 + (key - Qt::Key_F1));
    }
    if (onKeypad) {
        for (const KeyNumber& known : Keypad) {
            if (known.Key == key) {
                return known.Number;
            }
        }
    }
    for (const KeyNumber& known : Named) {
        if (known.Key == key) {
            return known.Number;
        }
    }
    return UnknownKey;
}

}  // namespace layer
