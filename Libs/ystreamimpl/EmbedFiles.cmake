# kelmora_embed_files(<output.cpp> <file>...): writes a source that carries the files' bytes, in the
# order given, and defines EmbeddedFiles() of embeddeddata.h. The assembler copies the bytes, which
# takes milliseconds where an array initialiser of a megabyte would take many seconds.
function(kelmora_embed_files output)
  set(blocks "")
  set(declarations "")
  set(rows "")
  set(index 0)
  foreach(file IN LISTS ARGN)
    if(NOT EXISTS ${file})
      message(FATAL_ERROR "The file to embed doesn't exist: ${file}")
    endif()
    get_filename_component(name ${file} NAME)
    set(symbol kelmora_embedded_${index})
    string(APPEND blocks "KELMORA_EMBED(\"${symbol}\", \"${file}\")\n")
    string(APPEND declarations
      "extern \"C\" const char ${symbol}[];\n"
      "extern \"C\" const std::uint64_t ${symbol}_size;\n")
    string(APPEND rows "    {u\"${name}\", ${symbol}, &${symbol}_size},\n")
    math(EXPR index "${index} + 1")
  endforeach()
  set(KELMORA_EMBED_BLOCKS "${blocks}")
  set(KELMORA_EMBED_DECLARATIONS "${declarations}")
  set(KELMORA_EMBED_ROWS "${rows}")
  configure_file(embeddeddata.cpp.in ${output} @ONLY)
  set_source_files_properties(${output} PROPERTIES OBJECT_DEPENDS "${ARGN}")
endfunction()
