# Writes the files in ASSETS into the C++ file OUTPUT, by name.
set(text "#include \"publisher/page/assets.h\"\n\nnamespace quillo::publisher {\n\nstd::vector<embedded_file> const& embedded_files()\n{\n    static std::vector<embedded_file> const files{\n")
foreach(path IN LISTS ASSETS)
  get_filename_component(name ${path} NAME)
  file(READ ${path} content)
  string(APPEND text "        {\"${name}\", R\"embedded(${content})embedded\"},\n")
endforeach()
string(APPEND text "    };\n    return files;\n}\n\n} // namespace quillo::publisher\n")
file(WRITE ${OUTPUT} "${text}")
