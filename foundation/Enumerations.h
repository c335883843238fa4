// The enumerations of the library. Their values are part of the API: exported scripts, model files and the
// catalogue of the library all use them. With a fixed width any number that a file holds is a value that can be tested.
#pragma once

namespace Tesk {

enum PixelTypes : int
{
    Undefined = 0,
    Gray = 1,
    Gray16 = 2,
    Gray32 = 3,
    Rgb = 4,
    Rgba = 5,
    Grad = 6,
    GeoMap = 7,
    Int = 8,
    Float = 9,
    Dble = 10,
    Bool = 11,
    IntXY = 12,
    FloatXY = 13,
    DbleXY = 14,
    Gray1 = 15,
    Short = 16
};

enum ErrorCodes : int
{
    NoError = 0,
    UnsupportedType = 1,
    IncompatibleType = 2,
    VoidObject = 3,
    IncompatibleSize = 4,
    IncompatibleMode = 5,
    CannotAllocate = 6,
    CannotOpen = 7,
    CannotRead = 8,
    CannotWrite = 9,
    UnsupportedFormat = 10,
    OutOfRange = 11,
    NotImplemented = 12,
    DeviceFailure = 13,
    SystemError = 15,
    CannotPerform = 16
};

enum DraggingHandles : int
{
    NoHandle = 0,
    FromHandle = 1,
    MiddleHandle = 2,
    ToHandle = 3,
    LengthHandle = 4,
    NHandle = 5,
    NWHandle = 6,
    WHandle = 7,
    SWHandle = 8,
    SHandle = 9,
    SEHandle = 10,
    EHandle = 11,
    NEHandle = 12,
    AllHandle = 13,
    NWAnchor = 14,
    NMAnchor = 15,
    NEAnchor = 16,
    MWAnchor = 17,
    MMAnchor = 18,
    MEAnchor = 19,
    SWAnchor = 20,
    SMAnchor = 21,
    SEAnchor = 22,
    SrcAnchorHandle = 23,
    DstAnchorHandle = 24,
    LowMinimumStepHandle = 25,
    HighMinimumStepHandle = 26,
    LowMinimumSlopeHandle = 27,
    HighMinimumSlopeHandle = 28,
    PointHandle = 29,
    MiddleHandle0 = 30,
    MiddleHandle1 = 31,
    MiddleHandle2 = 32
};

enum PredefinedColors : int
{
    Black = 0,
    DarkGray = 21,
    LightGray = 42,
    White = 63,
    Red = 3,
    Green = 12,
    Blue = 48,
    Cyan = 60,
    Magenta = 51,
    Yellow = 15,
    NoColor = -1,
    Cycle = -2,
    Current = -3
};

enum SourceMode : int
{
    Idle = 0,
    NotIdle = 1,
    AsciiFiles = 2,
    UnicodeFiles = 3,
    Sequence = 4,
    Camera = 5
};

// The handles of a polygon with typed corners; shown under the same label as DraggingHandles.
enum CornerHandles : int
{
    HCorner = 1,
    SCorner = 2,
    Circular = 4,
    Spline = 8,
    Elliptic = 16,
    Corner = 3
};

enum AlphaModes : int
{
    Opaque = 0,
    Transparent = 1,
    Premultiplied = 2
};

enum PredefinedBehaviors : int
{
    IgnoreIt = 0,
    ThrowIt = 1,
    ShowIt = 2,
    PrintIt = 3,
    AssertIt = 4
};

enum SIMDLevels : int
{
    NoSIMD = 0,
    SIMDMMX = 1,
    SIMDSSE = 2,
    SIMDSSE2 = 3,
    SIMDSSE3 = 4,
    SIMDSSE4 = 5,
    SIMDAVX = 6,
    SIMDAVX2 = 7,
    SIMDAVX512 = 8,
    SIMDNEONv7 = 9,
    SIMDNEONv8 = 10
};

enum GrayClipping : int
{
    Saturate = 0,
    Absolute = 1,
    Negative = 2,
    Rescale = 3
};

enum ColorComponents : int
{
    Red_RGB = 0,
    Green_RGB = 1,
    Blue_RGB = 2,
    Hue_HLS = 3,
    Lightness_HLS = 4,
    Saturation_HLS = 5,
    Hue_HSV = 6,
    Saturation_HSV = 7,
    Value_HSV = 8,
    Luma_YUV = 9,
    ChromaU_YUV = 10,
    ChromaV_YUV = 11,
    X_XYZ = 12,
    Y_XYZ = 13,
    Z_XYZ = 14,
    xx_XYZ = 15,
    yy_XYZ = 16,
    zz_XYZ = 17,
    Alpha = 18
};

enum BayerAlignments : int
{
    RedGreen = 0,
    GreenRed = 1,
    GreenBlue = 2,
    BlueGreen = 3
};

enum BayerQualities : int
{
    FastRgb = 0,
    SmoothRgb = 1,
    SharpRgb = 2,
    SmoothGray = 3,
    SharpGray = 4
};

enum Binarization : int
{
    Binary = 0,
    Means = 1,
    Soft = 2,
    ToGray1 = 3
};

enum GradientTypes : int
{
    StandardGradient = 0,
    PrewittGradient = 1,
    SobelGradient = 2,
    CorrelatedGradient = 3,
    Canny1Gradient = 4,
    Canny15Gradient = 5,
    Canny2Gradient = 6,
    ExternalGradient = 7,
    InternalGradient = 8
};

enum RegistrationModels : int
{
    Translation = 0,
    Rotation = 1,
    Mirroring = 2,
    Scaling = 3,
    Similarity = 4,
    Reflection = 5,
    Affinity = 6,
    Perspective = 7,
    Quadratic = 8,
    General = 9,
    Biquadratic = 10,
    Rational = 11
};

enum Polarities : int
{
    Raising = 1,
    Falling = 2,
    Both = 3
};

enum BlobSelection : int
{
    All = -1,
    AllSelected = -2,
    AllDeselected = -3
};

enum FittingModes : int
{
    AverageFit = 0,
    FastFit = 1,
    AccurateFit = 2,
    RobustFit = 3
};

enum Features : int
{
    BlobClass = 0,
    BlobArea = 1,
    BlobWorldArea = 2,
    BlobPerimeter = 3,
    BlobFullPerimeter = 4,
    BlobPerimetricRatio = 5,
    BlobFilledArea = 6,
    BlobFillingRatio = 7,
    BlobConvexArea = 8,
    BlobConvexAreaRatio = 9,
    BlobConvexPerimeter = 10,
    BlobConvexPerimeterRatio = 11,
    BlobCenterX = 12,
    BlobCenterY = 13,
    BlobEllipseWidth = 14,
    BlobEllipseHeight = 15,
    BlobEllipseAngle = 16,
    BlobEccentricity = 17,
    BlobMass = 18,
    BlobAverage = 19,
    BlobDeviation = 20,
    BlobMedian = 21,
    BlobMinimum = 22,
    BlobMaximum = 23,
    BlobCentroidX = 24,
    BlobCentroidY = 25,
    BlobEllipsoidWidth = 26,
    BlobEllipsoidHeight = 27,
    BlobEllipsoidAngle = 28,
    BlobEllipsoidEccentricity = 29,
    BlobBoxX = 30,
    BlobBoxY = 31,
    BlobBoxWidth = 32,
    BlobBoxHeight = 33,
    BlobWorldBoxX = 34,
    BlobWorldBoxY = 35,
    BlobWorldBoxWidth = 36,
    BlobWorldBoxHeight = 37,
    BlobAspectRatio = 38,
    BlobFeretCenterX = 39,
    BlobFeretCenterY = 40,
    BlobFeretWidth = 41,
    BlobFeretHeight = 42,
    BlobFeretAngle = 43,
    BlobFeretRatio = 44,
    BlobDiametralCenterX = 45,
    BlobDiametralCenterY = 46,
    BlobDiametralWidth = 47,
    BlobDiametralHeight = 48,
    BlobDiametralAngle = 49,
    BlobDiametralRatio = 50,
    BlobMatchingScore = 51,
    BlobMatchingX = 52,
    BlobMatchingY = 53,
    BlobMatchingScale = 54,
    BlobMatchingAngle = 55,
    BlobCenter = 12,
    BlobEllipse = 14,
    BlobCentroid = 24,
    BlobEllipsoid = 26,
    BlobBox = 30,
    BlobWorldBox = 34,
    BlobFeretBox = 39,
    BlobDiametralBox = 45,
    BlobOutline = 56,
    BlobVector = 58,
    BlobOutlineBeg = 56,
    BlobOutlineEnd = 57,
    BlobVectorBeg = 58,
    BlobVectorEnd = 59
};

enum SelectionMode : int
{
    Add = 0,
    Remove = 1,
    Select = 2,
    Deselect = 3
};

enum RangeMode : int
{
    Inside = 1,
    Outside = 2,
    Onside = 3,
    Over = 4
};

enum Directions : int
{
    HorizontalDirection = 1,
    VerticalDirection = 2,
    BothDirections = 3
};

enum Metrics : int
{
    StraightDistance = 0,
    ScaledDistance = 1,
    MahalanobisDistance = 2
};

enum EdgeSelection : int
{
    BestSlope = static_cast<int>(0x80000001u),
    BestStep = static_cast<int>(0x80000002u),
    BestSpan = static_cast<int>(0x80000003u),
    OverCenter = static_cast<int>(0x80000004u),
    AsFirst = static_cast<int>(0x80000000u) ///< of the second edge of a pair: as the first
};

enum FittingSide : int
{
    FitOver = 0,
    FitBefore = 1,
    FitAfter = 2
};

enum LayoutModes : int
{
    NoLayout = 0,
    RigidLayout = 1,
    FlexibleLayout = 2
};

enum Symbologies : int
{
    NoSymbology = 0,
    CodeEAN128 = 1,
    CodeEAN13 = 2,
    CodeEAN8 = 3,
    CodeUPCA = 4,
    CodeUPCE = 5,
    Code2of5 = 6,
    Code39 = 7,
    Code39Extended = 8,
    CodePharmacode = 9,
    CodeDatabar = 10,
    CodeDatabarLimited = 11,
    CodeDatabarExpanded = 12,
    Code93 = 13,
    CodeCodabar = 14,
    CodeITF14 = 15,
    CodeMatrix2of5 = 16,
    CodeMSI = 17,
    Code11 = 18,
    CodeDataMatrix = 32,
    CodeDMRectangle = 64,
    CodeQR = 128,
    CodeMicroQR = 256,
    CodeAztec = 512,
    CodeAztecCompact = 1024,
    CodePDF417 = 2048,
    CodeDotCode = 4096
};

enum CodePolarities : int
{
    BlackOnWhite = 1,
    WhiteOnBlack = 2,
    AutoPolarity = 3
};

enum CodeViews : int
{
    Straight = 1,
    Mirrored = 2,
    AutoView = 3
};

enum Sizes : int
{
    Size10 = 0,
    Size12 = 1,
    Size14 = 2,
    Size16 = 3,
    Size18 = 4,
    Size20 = 5,
    Size22 = 6,
    Size24 = 7,
    Size26 = 8,
    Size32 = 9,
    Size36 = 10,
    Size40 = 11,
    Size44 = 12,
    Size48 = 13,
    Size52 = 14,
    Size64 = 15,
    Size72 = 16,
    Size80 = 17,
    Size88 = 18,
    Size96 = 19,
    Size104 = 20,
    Size120 = 21,
    Size132 = 22,
    Size144 = 23,
    Size8x18 = 24,
    Size8x32 = 25,
    Size12x26 = 26,
    Size12x36 = 27,
    Size16x36 = 28,
    Size16x48 = 29,
    Version1 = 30,
    Version2 = 31,
    Version3 = 32,
    Version4 = 33,
    Version5 = 34,
    Version6 = 35,
    Version7 = 36,
    Version8 = 37,
    Version9 = 38,
    Version10 = 39,
    Version11 = 40,
    Version12 = 41,
    Version13 = 42,
    Version14 = 43,
    Version15 = 44,
    Version16 = 45,
    Version17 = 46,
    Version18 = 47,
    Version19 = 48,
    Version20 = 49,
    Version21 = 50,
    Version22 = 51,
    Version23 = 52,
    Version24 = 53,
    Version25 = 54,
    Version26 = 55,
    Version27 = 56,
    Version28 = 57,
    Version29 = 58,
    Version30 = 59,
    Version31 = 60,
    Version32 = 61,
    Version33 = 62,
    Version34 = 63,
    Version35 = 64,
    Version36 = 65,
    Version37 = 66,
    Version38 = 67,
    Version39 = 68,
    Version40 = 69,
    DotCode = 70
};

enum ComparatorMode : int
{
    CompareIdle = 0,
    EditingAligners = 1,
    EditingDetectors = 2,
    Trained = 3,
    Aligned = 4,
    Inspected = 5
};

enum ROITypes : int
{
    NoType = 0,
    Train = 1,
    Search = 2,
    Detect = 4
};

} // namespace Tesk
