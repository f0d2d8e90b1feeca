# Script mode: copies the demo's image set SOURCE (a set name) to TARGET and damages its buffer
# files: the first becomes text that is no buffer file, the second an empty file.
file(REMOVE_RECURSE ${TARGET} ${TARGET}.set)
get_filename_component(parent ${TARGET} DIRECTORY)
get_filename_component(name ${TARGET} NAME)
file(MAKE_DIRECTORY ${parent})
file(COPY_FILE ${SOURCE}.set ${TARGET}.set)
file(GLOB buffers ${SOURCE}/B*.im7)
file(MAKE_DIRECTORY ${TARGET})
foreach(buffer IN LISTS buffers)
  file(COPY ${buffer} DESTINATION ${TARGET})
endforeach()
file(WRITE ${TARGET}/B00001.im7 "this is no buffer file\n")
file(WRITE ${TARGET}/B00002.im7 "")
