#pragma once
// The whole public API of the SetApi library family in one include.

#include <SetApi/Export.h>
// The runtime: failures, logging, threads, files, plug-ins, values
#include <RTE/ActivityControl.h>
#include <RTE/ActivityFeedback.h>
#include <RTE/AtomicFileWrite.h>
#include <RTE/AttributesSink.h>
#include <RTE/BoostPath.h>
#include <RTE/Condition.h>
#include <RTE/DateTime.h>
#include <RTE/DeviceData.h>
#include <RTE/Exception.h>
#include <RTE/Export.h>
#include <RTE/FaultInjectingFileSystem.h>
#include <RTE/FileSystem.h>
#include <RTE/IndexRange.h>
#include <RTE/Logger.h>
#include <RTE/Plugin.h>
#include <RTE/PluginFactory.h>
#include <RTE/PluginRegistry.h>
#include <RTE/Range.h>
#include <RTE/Scale.h>
#include <RTE/ScopedFileSystemBackend.h>
#include <RTE/String.h>
#include <RTE/Thread.h>
#include <RTE/ThreadExceptionHandler.h>
#include <RTE/TimeSpan.h>

// Parameter trees
#include <RTE/Parameter/AccessMode.h>
#include <RTE/Parameter/Category.h>
#include <RTE/Parameter/Double.h>
#include <RTE/Parameter/Enumeration.h>
#include <RTE/Parameter/Factory.h>
#include <RTE/Parameter/Integer.h>
#include <RTE/Parameter/List.h>
#include <RTE/Parameter/Node.h>
#include <RTE/Parameter/Parameter.h>
#include <RTE/Parameter/ParameterServer.h>
#include <RTE/Parameter/Text.h>
#include <RTE/Parameter/Tree.h>

// Settings documents
#include <Storage/AutoSyncMode.h>
#include <Storage/Settings.h>
#include <Storage/SettingsDocument.h>
#include <Storage/SettingsNode.h>
#include <Storage/SettingsSerializer.h>

// Buffers
#include <BufferApi/AttributeStore.h>
#include <BufferApi/Attributes.h>
#include <BufferApi/BufferFile.h>
#include <BufferApi/Creation.h>
#include <BufferApi/DataType.h>
#include <BufferApi/Export.h>
#include <BufferApi/I_Attribute.h>
#include <BufferApi/I_Buffer.h>
#include <BufferApi/I_Component.h>
#include <BufferApi/I_Frame.h>
#include <BufferApi/I_PlaneBase.h>
#include <BufferApi/I_Scale.h>
#include <BufferApi/ImagePlaneAccess.h>
#include <BufferApi/MaskOp.h>
#include <BufferApi/PackType.h>
#include <BufferApi/PlaneMemoryCache.h>
#include <BufferApi/TypedScalar.h>

// Data objects
#include <DataObjects/BufferAttributes.h>
#include <DataObjects/BufferStructureInformation.h>
#include <DataObjects/C_Attribute.h>
#include <DataObjects/C_AttributeValue.h>
#include <DataObjects/C_Attributes.h>
#include <DataObjects/C_AttributesContainer.h>
#include <DataObjects/C_BufferAttributes.h>
#include <DataObjects/Export.h>
#include <DataObjects/GlobalAndFrameAttributes.h>
#include <DataObjects/Image.h>
#include <DataObjects/ImageBufferVariant.h>
#include <DataObjects/ImageConversion.h>
#include <DataObjects/ImageData.h>
#include <DataObjects/ImageVolumeVariant.h>
#include <DataObjects/LinearScale.h>
#include <DataObjects/Mask.h>
#include <DataObjects/MaskVolume.h>
#include <DataObjects/PixelType.h>
#include <DataObjects/ScalarFields.h>
#include <Algorithms/IndexRange.h>
#include <Math/Point2T.h>
#include <Math/Size3T.h>

// Stream components: the bytes of one stream, and the stream set's table of contents
#include <StreamIO/AttributeReader.h>
#include <StreamIO/AttributeWriter.h>
#include <StreamIO/ContentPurpose.h>
#include <StreamIO/Export.h>
#include <StreamIO/I_AttributeReader.h>
#include <StreamIO/I_ImageFrameReader.h>
#include <StreamIO/I_RecordingFrameReader.h>
#include <StreamIO/I_RecordingWriter.h>
#include <StreamIO/I_ScalarFieldReader.h>
#include <StreamIO/I_ScaleReader.h>
#include <StreamIO/I_TraceReader.h>
#include <StreamIO/ImageReader.h>
#include <StreamIO/ImageWriter.h>
#include <StreamIO/ReaderConfiguration.h>
#include <StreamIO/ScaleReader.h>
#include <StreamIO/ScaleWriter.h>
#include <StreamIO/ScaleXml.h>
#include <StreamIO/TraceReader.h>
#include <StreamIO/TraceWriter.h>
#include <StreamIO/WriterNameBuilder.h>

// Sets
#include <SetApi/set/C_DataSetParameter.h>
#include <SetApi/set/C_NullSet.h>
#include <SetApi/set/C_Set.h>
#include <SetApi/set/C_SetBase.h>
#include <SetApi/set/C_SetUtilities.h>
#include <SetApi/set/CopyParameterValueSpec.h>
#include <SetApi/set/I_FileBasedSet.h>
#include <SetApi/set/I_Set.h>
#include <SetApi/set/I_SetObserver.h>
#include <SetApi/set/SetTypeIdentifiers.h>

// The set factory
#include <SetApi/factory/C_CopyFiles.h>
#include <SetApi/factory/C_SetFactory.h>
#include <SetApi/factory/C_SetFileSystemHierarchy.h>
#include <SetApi/factory/C_SetIterator.h>
#include <SetApi/factory/ConvertStreamSet.h>
#include <SetApi/factory/I_SetFactoryObserver.h>
#include <SetApi/factory/I_SetHierarchy.h>
#include <SetApi/factory/I_SetWriter.h>
#include <SetApi/factory/SetWriter.h>
#include <SetApi/factory/Tools.h>
#include <SetApi/factory/WorkerQueue.h>
#include <SetApi/factory/WorkerThread.h>

// Stream sets
#include <SetApi/stream/BufferStreamWriter.h>
#include <SetApi/stream/I_StreamSetConfigurationWriter.h>
#include <SetApi/stream/ImageBufferStreamWriterSet.h>
#include <SetApi/stream/LoadSaveReaderConfiguration.h>
#include <SetApi/stream/MaskReader.h>
#include <SetApi/stream/MaskWriter.h>
#include <SetApi/stream/PlaneWidening.h>
#include <SetApi/stream/RepairCorruptStreamSet.h>
#include <SetApi/stream/ScalarFieldReader.h>
#include <SetApi/stream/ScalarFieldWriter.h>
#include <SetApi/stream/StreamSet.h>
#include <SetApi/stream/StreamSetConfiguration.h>
#include <SetApi/stream/StreamSetReader.h>
#include <SetApi/stream/StreamSetRescaler.h>
#include <SetApi/stream/StreamSetWriter.h>

// Typed views of sets
#include <SetApi/dataobjects/ImageSet.h>
#include <SetApi/dataobjects/ImageSetVariant.h>
