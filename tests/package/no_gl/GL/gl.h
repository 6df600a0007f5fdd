#error "the scene side and the public headers include no GL, EGL or window header"
