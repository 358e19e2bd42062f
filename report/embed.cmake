# Makes a C++ source of the page's style and script: cmake -DSOURCE=DIR -DOUTPUT=FILE -P embed.cmake
function(definition name file)
  file(READ ${SOURCE}/${file} text)
  # A literal holds 64 KiB at most in some compilers; these files are smaller.
  set(text "std::string_view ${name}() {\n  return R\"~~(${text})~~\";\n}\n\n")
  string(APPEND made "${text}")
  set(made "${made}" PARENT_SCOPE)
endfunction()

set(made "#include \"report/html.h\"\n\nnamespace velk::report {\n\n")
definition(drawingStyle drawing.css)
definition(pageStyle page.css)
definition(pageScript page.js)
string(APPEND made "}  // namespace velk::report\n")
file(WRITE ${OUTPUT} "${made}")
