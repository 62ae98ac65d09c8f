# cmake -DINPUT=file -DOUTPUT=file.cpp -DNAME=name -P EmbedFile.cmake
# Writes a source file that holds a file's bytes as kova::resources::NAME and their number as NAME_size.
file(READ ${INPUT} hex HEX)
get_filename_component(file ${INPUT} NAME)
string(REGEX REPLACE "([0-9a-f][0-9a-f])" "0x\\1," bytes "${hex}")
string(REGEX REPLACE "(................................................................................)" "\\1\n" bytes "${bytes}")
file(WRITE ${OUTPUT} "// Made from ${file} by the build.
#include <cstddef>
namespace kova::resources {
extern const unsigned char ${NAME}[];
extern const std::size_t ${NAME}_size;
const unsigned char ${NAME}[] = {
${bytes}
0};
const std::size_t ${NAME}_size = sizeof ${NAME} - 1;
}  // namespace kova::resources
")
