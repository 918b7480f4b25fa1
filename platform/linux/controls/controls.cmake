# Common controls: image lists, trees, up-downs, progress bars, the property sheet, the file dialog.
target_sources(vantrel_platform_windows PRIVATE
  linux/controls/file_dialog.cpp
  linux/controls/file_names.cpp
  linux/controls/progress_control.cpp
  linux/controls/sheet_layout.cpp
  linux/controls/sheet_window.cpp
  linux/controls/tree_control.cpp
  linux/controls/tree_item.cpp
  linux/controls/tree_widget.cpp
  linux/controls/updown_control.cpp)
