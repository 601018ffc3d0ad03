<?xml version="1.0" encoding="UTF-8"?>
<!-- Waypoints and tracks of a GPX file as KML: another vocabulary, in another namespace, with an
     element of a third one. -->
<xsl:stylesheet version="1.0" xmlns:xsl="http://www.w3.org/1999/XSL/Transform"
    xmlns="http://www.opengis.net/kml/2.2" xmlns:atom="http://www.w3.org/2005/Atom"
    xmlns:gpx="http://www.topografix.com/GPX/1/1" exclude-result-prefixes="gpx">
  <xsl:output method="xml" encoding="UTF-8" indent="yes"/>

  <xsl:template match="/gpx:gpx">
    <kml>
      <Document>
        <xsl:apply-templates select="gpx:metadata/gpx:name"/>
        <xsl:apply-templates select="gpx:metadata/gpx:link"/>
        <xsl:apply-templates select="gpx:metadata/gpx:desc"/>
        <Style id="track">
          <LineStyle><color>ff3c14dc</color><width>4</width></LineStyle>
        </Style>
        <Folder>
          <name>Places</name>
          <xsl:apply-templates select="gpx:wpt"/>
        </Folder>
        <Folder>
          <name>Tracks</name>
          <xsl:apply-templates select="gpx:trk"/>
        </Folder>
      </Document>
    </kml>
  </xsl:template>

  <xsl:template match="gpx:wpt">
    <Placemark>
      <xsl:apply-templates select="gpx:name | gpx:desc"/>
      <Point>
        <altitudeMode>absolute</altitudeMode>
        <coordinates><xsl:apply-templates select="." mode="place"/></coordinates>
      </Point>
    </Placemark>
  </xsl:template>

  <xsl:template match="gpx:trk">
    <xsl:variable name="times" select="gpx:trkseg/gpx:trkpt/gpx:time"/>
    <Placemark>
      <xsl:apply-templates select="gpx:name | gpx:desc"/>
      <TimeSpan>
        <begin><xsl:value-of select="$times[1]"/></begin>
        <end><xsl:value-of select="$times[last()]"/></end>
      </TimeSpan>
      <styleUrl>#track</styleUrl>
      <xsl:apply-templates select="gpx:extensions"/>
      <MultiGeometry>
        <xsl:apply-templates select="gpx:trkseg"/>
      </MultiGeometry>
    </Placemark>
  </xsl:template>

  <xsl:template match="gpx:trkseg">
    <LineString>
      <altitudeMode>absolute</altitudeMode>
      <coordinates>
        <xsl:for-each select="gpx:trkpt">
          <xsl:if test="position() &gt; 1"><xsl:text> </xsl:text></xsl:if>
          <xsl:apply-templates select="." mode="place"/>
        </xsl:for-each>
      </coordinates>
    </LineString>
  </xsl:template>

  <!-- GPX names the latitude first, KML the longitude. -->
  <xsl:template match="gpx:wpt | gpx:trkpt" mode="place">
    <xsl:value-of select="concat(@lon, ',', @lat)"/>
    <xsl:if test="gpx:ele"><xsl:value-of select="concat(',', gpx:ele)"/></xsl:if>
  </xsl:template>

  <xsl:template match="gpx:name"><name><xsl:value-of select="."/></name></xsl:template>
  <xsl:template match="gpx:desc"><description><xsl:value-of select="."/></description></xsl:template>
  <xsl:template match="gpx:link"><atom:link href="{@href}" title="{gpx:text}"/></xsl:template>

  <!-- Whatever others have added to the track, of whatever namespace. -->
  <xsl:template match="gpx:extensions">
    <ExtendedData>
      <xsl:for-each select="*">
        <Data name="{local-name()}"><value><xsl:value-of select="."/></value></Data>
      </xsl:for-each>
    </ExtendedData>
  </xsl:template>
</xsl:stylesheet>
