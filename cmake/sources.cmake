# The plug-in's sources in two lists. Portable files see no Windows header, directly or through another: they build
# natively for tests and into the DLL. tests/lint proves it.
set(PORTABLE_SOURCES
  src/base/text.cpp
  src/devmode/devmode_record.cpp
  src/devmode/operation_settings.cpp
  src/docpages/hex_command.cpp
  src/docpages/operation_preview.cpp
  src/language/language_choice.cpp
  src/language/language_file.cpp
)

set(WIN32_SOURCES
  src/devpages/device_sheet.cpp
  src/docpages/document_sheet.cpp
  src/docpages/hex_key_filter.cpp
  src/docpages/operation_dialog.cpp
  src/docpages/operation_page.cpp
  src/docpages/print_density.cpp
  src/intrface/class_factory.cpp
  src/intrface/devmode_call.cpp
  src/intrface/dll_main.cpp
  src/intrface/oem_ui.cpp
  src/intrface/win/activation_context.cpp
  src/intrface/win/help_tips.cpp
  src/intrface/win/platform_win.cpp
  src/intrface/win/property_sheet.cpp
  src/intrface/win/shell_functions.cpp
  src/intrface/win/subclass.cpp
  src/language/language_setup.cpp
  src/language/messages.cpp
  src/language/registry_choice.cpp
  src/language/text_lookup.cpp
  src/language/text_table.cpp
)
