# Installing, the CMake package and the pkg-config file are described here.
