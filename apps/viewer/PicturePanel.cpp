#include "apps/viewer/Panels.h"
#include "apps/viewer/Viewer.h"

#include <imgui.h>

#include <cstdio>
#include <filesystem>
#include <utility>

namespace OV::ViewerApp
{

namespace
{

namespace fs = std::filesystem;

} // namespace

void Panels::AskForPicture()
{
    m_isPictureOpen = m_viewer.GetDesk().GetModel() != nullptr;
    m_isPictureNew = m_isPictureOpen;
    const std::string model = m_viewer.GetDesk().GetPath();
    if (m_isPictureOpen && m_pictureOf != model)
    {
        m_pictureOf = model;
        std::error_code ignored;
        const fs::path path = fs::current_path(ignored) / fs::path(model).stem();
        std::snprintf(m_pictureName, sizeof(m_pictureName), "%s.png", path.c_str());
    }
}

void Panels::DrawPicturePanel()
{
    if (!m_isPictureOpen)
    {
        return;
    }
    PlaceInMiddle(520.0f, 0.0f);
    if (ImGui::Begin("Save a picture", &m_isPictureOpen, ImGuiWindowFlags_NoResize | ImGuiWindowFlags_NoCollapse))
    {
        if (std::exchange(m_isPictureNew, false))
        {
            ImGui::SetKeyboardFocusHere();
        }
        const bool isEntered = ImGui::InputText("PNG or JPEG", m_pictureName, sizeof(m_pictureName),
                                                ImGuiInputTextFlags_EnterReturnsTrue);
        ImGui::InputInt2("Pixels", m_pictureSize);
        ImGui::Checkbox("Without background", &m_isPictureTransparent);
        std::error_code ignored;
        // A file that is there is replaced by nobody who doesn't know.
        const bool isThere = fs::exists(m_pictureName, ignored);
        if (ImGui::Button(isThere ? "Replace###Save" : "Save###Save") || (isEntered && !isThere))
        {
            m_isPictureOpen = false;
            m_viewer.TakePicture(m_pictureName, m_pictureSize[0], m_pictureSize[1], m_isPictureTransparent);
        }
        ImGui::SameLine();
        if (ImGui::Button("As large as here"))
        {
            m_pictureSize[0] = m_viewer.GetDesk().GetWidth();
            m_pictureSize[1] = m_viewer.GetDesk().GetHeight();
        }
        if (isThere)
        {
            ImGui::SameLine();
            ImGui::TextDisabled("There is a file of that name.");
        }
    }
    ImGui::End();
}

} // namespace OV::ViewerApp
