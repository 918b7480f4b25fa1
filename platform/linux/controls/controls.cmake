# Common controls: image lists, trees, up-downs, progress bars, the property sheet, the file dialog.
target_sources(vantrel_platform_windows PRIVATE
  linux/controls/common_controls.cpp)
