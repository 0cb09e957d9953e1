# Writes Edition.cpp, which tells one edition of the core from another by a digest of all it is made
# of: run as `cmake -DCORE=FOLDER -DOUTPUT=FILE -P DigestSources.cmake`.
file(GLOB_RECURSE parts RELATIVE ${CORE} ${CORE}/*)
list(SORT parts)
set(digests "")
foreach(part IN LISTS parts)
  file(SHA256 ${CORE}/${part} digest)
  string(APPEND digests "${part} ${digest}\n")
endforeach()
string(SHA256 edition "${digests}")
file(WRITE ${OUTPUT} "#include \"TidewellCore/Edition.h\"\n
std::string_view Edition::digest() { return \"${edition}\"; }\n")
