# GLSL texts live beside the effect that uses them and are embedded unchanged.
#
# orvane_shaders(SkyEffectES20.vert ...) makes, for each text, a header
# "orvane/effects/shaders/SkyEffectES20.vert.h" in the build tree with the constant
# OV::Shaders::SkyEffectES20Vert. orvane_host_shaders does the same for the kit, under
# "orvane_host/present/shaders/".
set(ORVANE_GENERATED_DIR ${PROJECT_BINARY_DIR}/generated)

function(orvane_shaders)
    orvane_embed_shaders(orvane_shader_headers orvane/effects/shaders ${ARGN})
endfunction()

function(orvane_host_shaders)
    orvane_embed_shaders(orvane_host_shader_headers orvane_host/present/shaders ${ARGN})
endfunction()

function(orvane_embed_shaders target folder)
    set(outputs)
    foreach(shader IN LISTS ARGN)
        get_filename_component(name ${shader} NAME)
        set(input ${CMAKE_CURRENT_SOURCE_DIR}/${shader})
        set(output ${ORVANE_GENERATED_DIR}/${folder}/${name}.h)
        add_custom_command(
            OUTPUT ${output}
            COMMAND ${CMAKE_COMMAND} -DINPUT=${input} -DOUTPUT=${output}
                    -P ${PROJECT_SOURCE_DIR}/cmake/EmbedShader.cmake
            DEPENDS ${input} ${PROJECT_SOURCE_DIR}/cmake/EmbedShader.cmake
            COMMENT "Embedding ${shader}"
            VERBATIM)
        list(APPEND outputs ${output})
    endforeach()
    # The rule belongs to the folder that calls; the library waits for it through a target.
    add_custom_target(${target} DEPENDS ${outputs})
endfunction()
