// A sequence built by the labels of its methods, as the menus do.
#pragma once

#include "engine/Engine.h"
#include "foundation/Status.h"
#include "image/Image.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <cwchar>
#include <filesystem>
#include <memory>
#include <stdexcept>
#include <string>
#include <unistd.h>
#include <utility>

namespace TeskTests {

using namespace Tesk;

inline constexpr const wchar_t* constantCopy = L"Constant - Gray";

inline int FindMethod(const wchar_t* label)
{
    return Engine::FindMethod(nullptr, nullptr, label);
}

class SequenceTest : public ::testing::Test
{
protected:
    SequenceTest()
    {
        Status::ErrorBehavior(IgnoreIt);
        Status::Shallow = true;
        Engine::Trace = nullptr;
    }
    ~SequenceTest() override { Status::Shallow = false; }

    Operation& Append(const wchar_t* label) { return Append(FindMethod(label)); }
    Operation& Append(int method)
    {
        auto made = std::make_unique<Operation>();
        engine_.UnreserveVariables();
        made->Set(engine_, method, false);
        Operation& operation = engine_.InsertOperation(std::move(made));
        engine_.FillOperation(engine_.NumOperations() - 1);
        for (Arg& argument : operation.Args)
            argument.Visible = true;
        return operation;
    }
    Operation& Append(const wchar_t* className, const wchar_t* label)
    {
        return Append(Engine::FindMethod(className, nullptr, label));
    }
    /// The place of the argument of that name.
    static std::size_t PlaceOf(const Operation& operation, const wchar_t* identifier)
    {
        for (std::size_t i = 0; i < operation.Args.size(); i++)
            if (!std::wcscmp(Engine::Tree[operation.Args[i].Node]->Identifier, identifier)) return i;
        throw std::runtime_error("no such argument");
    }
    template <typename T>
    static Var<T>& Argument(const Operation& operation, const wchar_t* identifier)
    {
        return dynamic_cast<Var<T>&>(*operation.Args[PlaceOf(operation, identifier)].Variable);
    }
    template <typename T>
    static T& Value(const Operation& operation, const wchar_t* identifier)
    {
        return Argument<T>(operation, identifier).Value;
    }
    void SetPath(Operation& operation, const std::string& path)
    {
        auto& variable = Argument<const char*>(operation, L"PathName");
        SetText(variable, path);
        engine_.ChangeVariable(&variable);
    }
    void Run()
    {
        engine_.Execute();
        ASSERT_EQ(Status::Error().Code, NoError) << Status::AsciiError();
    }
    /// An image of a size, filled with a gray value.
    Operation& AppendImage(int value, int width = 64, int height = 64)
    {
        Operation& operation = Append(constantCopy);
        ValueOf<int>(operation, 0) = width;
        ValueOf<int>(operation, 1) = height;
        ValueOf<int>(operation, 2) = value;
        return operation;
    }
    template <typename T>
    static T& ValueOf(const Operation& operation, std::size_t argument)
    {
        return static_cast<Var<T>&>(*operation.Args.at(argument).Variable).Value;
    }
    template <typename T>
    void Change(Operation& operation, std::size_t argument, T value)
    {
        ValueOf<T>(operation, argument) = value;
        engine_.ChangeVariable(operation.Args[argument].Variable);
    }
    Operation& At(int index) { return *engine_.Operations.at(static_cast<std::size_t>(index)); }
    int IndexOf(const Operation& operation)
    {
        int i = 0;
        while (&At(i) != &operation)
            i++;
        return i;
    }
    bool Remove(int index)
    {
        int argument, consumer;
        return engine_.RemoveOperation(index, argument, consumer, false);
    }
    static std::wstring Name(const Arg& argument) { return argument.Variable ? argument.Variable->NameText : L""; }
    static int Pixel(const Operation& operation, std::size_t argument)
    {
        return ValueOf<Image>(operation, argument).PixelGray(0, 0);
    }

    Engine engine_;
};

/// With a folder for its files, which goes with it.
class SequenceWithFiles : public SequenceTest
{
protected:
    SequenceWithFiles()
        : folder_(std::filesystem::temp_directory_path() / ("tesk-sequence-" + std::to_string(::getpid())))
    {
        std::filesystem::create_directories(folder_);
    }
    ~SequenceWithFiles() override { std::filesystem::remove_all(folder_); }

    std::string File(const std::string& name) const { return (folder_ / name).string(); }

private:
    std::filesystem::path folder_;
};

} // namespace TeskTests
