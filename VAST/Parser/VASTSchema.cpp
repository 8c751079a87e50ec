#include "VAST/Parser/VASTSchema.h"

// Outer structure first, then the types it uses. An ad, a creative and a companion may be empty. Extensions may hold
// anything; a wrapper's creatives carry tracking only and leave out what its inline ad brings.
constexpr char kVASTSchema[] = R"xsd(<?xml version="1.0" encoding="UTF-8"?>
<xs:schema xmlns:xs="http://www.w3.org/2001/XMLSchema" elementFormDefault="unqualified">

  <xs:element name="VAST">
    <xs:complexType>
      <xs:sequence>
        <xs:element name="Ad" type="Ad" minOccurs="0" maxOccurs="unbounded"/>
      </xs:sequence>
      <xs:attribute name="version" type="xs:string" use="required"/>
    </xs:complexType>
  </xs:element>

  <xs:complexType name="Ad">
    <xs:choice minOccurs="0">
      <xs:element name="InLine" type="InLine"/>
      <xs:element name="Wrapper" type="Wrapper"/>
    </xs:choice>
    <xs:attribute name="id" type="xs:string" use="required"/>
  </xs:complexType>

  <xs:complexType name="InLine">
    <xs:sequence>
      <xs:element name="AdSystem" type="AdSystem"/>
      <xs:element name="AdTitle" type="xs:string"/>
      <xs:element name="Description" type="xs:string" minOccurs="0"/>
      <xs:element name="Survey" type="xs:anyURI" minOccurs="0"/>
      <xs:element name="Error" type="xs:anyURI" minOccurs="0"/>
      <xs:element name="Impression" type="URIWithId" maxOccurs="unbounded"/>
      <xs:element name="Creatives">
        <xs:complexType>
          <xs:sequence>
            <xs:element name="Creative" type="InLineCreative" maxOccurs="unbounded"/>
          </xs:sequence>
        </xs:complexType>
      </xs:element>
      <xs:element name="Extensions" type="Extensions" minOccurs="0"/>
    </xs:sequence>
  </xs:complexType>

  <xs:complexType name="Wrapper">
    <xs:sequence>
      <xs:element name="AdSystem" type="AdSystem"/>
      <xs:element name="VASTAdTagURI" type="xs:anyURI"/>
      <xs:element name="Error" type="xs:anyURI" minOccurs="0"/>
      <xs:element name="Impression" type="xs:anyURI" maxOccurs="unbounded"/>
      <xs:element name="Creatives">
        <xs:complexType>
          <xs:sequence>
            <xs:element name="Creative" type="WrapperCreative" minOccurs="0" maxOccurs="unbounded"/>
          </xs:sequence>
        </xs:complexType>
      </xs:element>
      <xs:element name="Extensions" type="Extensions" minOccurs="0"/>
    </xs:sequence>
  </xs:complexType>

  <xs:complexType name="AdSystem">
    <xs:simpleContent>
      <xs:extension base="xs:string">
        <xs:attribute name="version" type="xs:string"/>
      </xs:extension>
    </xs:simpleContent>
  </xs:complexType>

  <xs:complexType name="URIWithId">
    <xs:simpleContent>
      <xs:extension base="xs:anyURI">
        <xs:attribute name="id" type="xs:string"/>
      </xs:extension>
    </xs:simpleContent>
  </xs:complexType>

  <xs:complexType name="Extensions">
    <xs:sequence>
      <xs:element name="Extension" type="xs:anyType" minOccurs="0" maxOccurs="unbounded"/>
    </xs:sequence>
  </xs:complexType>

  <xs:attributeGroup name="creative">
    <xs:attribute name="id" type="xs:string"/>
    <xs:attribute name="sequence" type="xs:integer"/>
    <xs:attribute name="AdID" type="xs:string"/>
  </xs:attributeGroup>

  <xs:complexType name="InLineCreative">
    <xs:choice minOccurs="0">
      <xs:element name="Linear" type="InLineLinear"/>
      <xs:element name="CompanionAds" type="CompanionAds"/>
      <xs:element name="NonLinearAds">
        <xs:complexType>
          <xs:sequence>
            <xs:element name="TrackingEvents" type="TrackingEvents" minOccurs="0"/>
            <xs:element name="NonLinear" type="NonLinear" maxOccurs="unbounded"/>
          </xs:sequence>
        </xs:complexType>
      </xs:element>
    </xs:choice>
    <xs:attributeGroup ref="creative"/>
  </xs:complexType>

  <xs:complexType name="WrapperCreative">
    <xs:choice minOccurs="0">
      <xs:element name="Linear">
        <xs:complexType>
          <xs:sequence>
            <xs:element name="TrackingEvents" type="TrackingEvents" minOccurs="0"/>
            <xs:element name="VideoClicks" minOccurs="0">
              <xs:complexType>
                <xs:sequence>
                  <xs:element name="ClickTracking" type="URIWithId" minOccurs="0" maxOccurs="unbounded"/>
                </xs:sequence>
              </xs:complexType>
            </xs:element>
          </xs:sequence>
        </xs:complexType>
      </xs:element>
      <xs:element name="CompanionAds" type="CompanionAds"/>
      <xs:element name="NonLinearAds">
        <xs:complexType>
          <xs:sequence>
            <xs:element name="TrackingEvents" type="TrackingEvents" minOccurs="0"/>
            <xs:element name="NonLinear" type="NonLinear" minOccurs="0" maxOccurs="unbounded"/>
          </xs:sequence>
        </xs:complexType>
      </xs:element>
    </xs:choice>
    <xs:attributeGroup ref="creative"/>
  </xs:complexType>

  <xs:complexType name="InLineLinear">
    <xs:sequence>
      <xs:element name="Duration" type="xs:time"/>
      <xs:element name="TrackingEvents" type="TrackingEvents" minOccurs="0"/>
      <xs:element name="AdParameters" type="xs:string" minOccurs="0"/>
      <xs:element name="VideoClicks" type="VideoClicks" minOccurs="0"/>
      <xs:element name="MediaFiles" minOccurs="0">
        <xs:complexType>
          <xs:sequence>
            <xs:element name="MediaFile" type="MediaFile" maxOccurs="unbounded"/>
          </xs:sequence>
        </xs:complexType>
      </xs:element>
    </xs:sequence>
  </xs:complexType>

  <xs:complexType name="VideoClicks">
    <xs:sequence>
      <xs:element name="ClickThrough" type="URIWithId" minOccurs="0"/>
      <xs:element name="ClickTracking" type="URIWithId" minOccurs="0" maxOccurs="unbounded"/>
      <xs:element name="CustomClick" type="URIWithId" minOccurs="0" maxOccurs="unbounded"/>
    </xs:sequence>
  </xs:complexType>

  <xs:complexType name="MediaFile">
    <xs:simpleContent>
      <xs:extension base="xs:anyURI">
        <xs:attribute name="id" type="xs:string"/>
        <xs:attribute name="delivery" type="Delivery" use="required"/>
        <xs:attribute name="type" type="xs:string" use="required"/>
        <xs:attribute name="bitrate" type="xs:integer"/>
        <xs:attribute name="width" type="xs:integer" use="required"/>
        <xs:attribute name="height" type="xs:integer" use="required"/>
        <xs:attribute name="scalable" type="xs:boolean"/>
        <xs:attribute name="maintainAspectRatio" type="xs:boolean"/>
        <xs:attribute name="apiFramework" type="xs:string"/>
      </xs:extension>
    </xs:simpleContent>
  </xs:complexType>

  <xs:simpleType name="Delivery">
    <xs:restriction base="xs:token">
      <xs:enumeration value="progressive"/>
      <xs:enumeration value="streaming"/>
    </xs:restriction>
  </xs:simpleType>

  <xs:complexType name="TrackingEvents">
    <xs:sequence>
      <xs:element name="Tracking" minOccurs="0" maxOccurs="unbounded">
        <xs:complexType>
          <xs:simpleContent>
            <xs:extension base="xs:anyURI">
              <xs:attribute name="event" type="Event" use="required"/>
            </xs:extension>
          </xs:simpleContent>
        </xs:complexType>
      </xs:element>
    </xs:sequence>
  </xs:complexType>

  <xs:simpleType name="Event">
    <xs:restriction base="xs:token">
      <xs:enumeration value="creativeView"/>
      <xs:enumeration value="start"/>
      <xs:enumeration value="firstQuartile"/>
      <xs:enumeration value="midpoint"/>
      <xs:enumeration value="thirdQuartile"/>
      <xs:enumeration value="complete"/>
      <xs:enumeration value="mute"/>
      <xs:enumeration value="unmute"/>
      <xs:enumeration value="pause"/>
      <xs:enumeration value="resume"/>
      <xs:enumeration value="rewind"/>
      <xs:enumeration value="fullscreen"/>
      <xs:enumeration value="expand"/>
      <xs:enumeration value="collapse"/>
      <xs:enumeration value="acceptInvitation"/>
      <xs:enumeration value="close"/>
    </xs:restriction>
  </xs:simpleType>

  <xs:group name="resource">
    <xs:choice>
      <xs:element name="StaticResource">
        <xs:complexType>
          <xs:simpleContent>
            <xs:extension base="xs:anyURI">
              <xs:attribute name="creativeType" type="xs:string" use="required"/>
            </xs:extension>
          </xs:simpleContent>
        </xs:complexType>
      </xs:element>
      <xs:element name="IFrameResource" type="xs:anyURI"/>
      <xs:element name="HTMLResource" type="xs:string"/>
    </xs:choice>
  </xs:group>

  <xs:attributeGroup name="area">
    <xs:attribute name="id" type="xs:string"/>
    <xs:attribute name="width" type="xs:integer" use="required"/>
    <xs:attribute name="height" type="xs:integer" use="required"/>
    <xs:attribute name="expandedWidth" type="xs:integer"/>
    <xs:attribute name="expandedHeight" type="xs:integer"/>
    <xs:attribute name="apiFramework" type="xs:string"/>
  </xs:attributeGroup>

  <xs:complexType name="CompanionAds">
    <xs:sequence>
      <xs:element name="Companion" minOccurs="0" maxOccurs="unbounded">
        <xs:complexType>
          <xs:sequence>
            <xs:group ref="resource" minOccurs="0"/>
            <xs:element name="TrackingEvents" type="TrackingEvents" minOccurs="0"/>
            <xs:element name="CompanionClickThrough" type="xs:anyURI" minOccurs="0"/>
            <xs:element name="AltText" type="xs:string" minOccurs="0"/>
            <xs:element name="AdParameters" type="xs:string" minOccurs="0"/>
          </xs:sequence>
          <xs:attributeGroup ref="area"/>
        </xs:complexType>
      </xs:element>
    </xs:sequence>
  </xs:complexType>

  <xs:complexType name="NonLinear">
    <xs:sequence>
      <xs:group ref="resource" minOccurs="0"/>
      <xs:element name="NonLinearClickThrough" type="xs:anyURI" minOccurs="0"/>
      <xs:element name="AdParameters" type="xs:string" minOccurs="0"/>
    </xs:sequence>
    <xs:attributeGroup ref="area"/>
    <xs:attribute name="scalable" type="xs:boolean"/>
    <xs:attribute name="maintainAspectRatio" type="xs:boolean"/>
    <xs:attribute name="minSuggestedDuration" type="xs:time"/>
  </xs:complexType>

</xs:schema>
)xsd";

constexpr std::uint32_t kVASTSchemaLength = sizeof kVASTSchema - 1;
