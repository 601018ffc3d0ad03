<?xml version="1.0" encoding="UTF-8"?>
<!-- The hours of one month, by boat and by person. A boat with more hours comes first. -->
<xsl:stylesheet version="1.0" xmlns:xsl="http://www.w3.org/1999/XSL/Transform">
  <xsl:output method="text" encoding="UTF-8"/>
  <xsl:param name="month" select="'2024-03'"/>

  <!-- A record is entered with its month, so that a group is looked up and not searched. -->
  <xsl:key name="month" match="work" use="substring(@date, 1, 7)"/>
  <xsl:key name="boat" match="work" use="concat(substring(@date, 1, 7), ' ', @boat)"/>
  <xsl:key name="person" match="work" use="concat(substring(@date, 1, 7), ' ', @who)"/>
  <xsl:key name="share" match="work" use="concat(substring(@date, 1, 7), ' ', @who, ' ', @boat)"/>

  <!-- One record for each boat and each person: the first of its group. -->
  <xsl:variable name="all" select="key('month', $month)"/>
  <xsl:variable name="boats" select="$all[generate-id() =
      generate-id(key('boat', concat($month, ' ', @boat))[1])]"/>
  <xsl:variable name="people" select="$all[generate-id() =
      generate-id(key('person', concat($month, ' ', @who))[1])]"/>

  <xsl:template match="/hours">
    <xsl:value-of select="concat(@yard, ', hours of ', $month)"/>
    <xsl:text>&#10;</xsl:text>
    <xsl:for-each select="$boats">
      <xsl:sort select="sum(key('boat', concat($month, ' ', @boat))/@hours)"
          data-type="number" order="descending"/>
      <xsl:sort select="@boat"/>
      <xsl:call-template name="boat"/>
    </xsl:for-each>
    <xsl:call-template name="table"/>
  </xsl:template>

  <xsl:template name="boat">
    <xsl:variable name="records" select="key('boat', concat($month, ' ', @boat))"/>
    <xsl:text>&#10;</xsl:text>
    <xsl:value-of select="@boat"/>
    <xsl:text>&#10;</xsl:text>
    <xsl:for-each select="$records">
      <xsl:sort select="@date"/>
      <xsl:sort select="@who"/>
      <xsl:value-of select="concat('  ', substring(@date, 9), '  ')"/>
      <xsl:value-of select="substring(concat(@who, '          '), 1, 10)"/>
      <xsl:call-template name="hours"/>
      <xsl:value-of select="concat('  ', .)"/>
      <xsl:text>&#10;</xsl:text>
    </xsl:for-each>
    <xsl:text>                -----&#10;              </xsl:text>
    <xsl:call-template name="hours">
      <xsl:with-param name="of" select="$records"/>
    </xsl:call-template>
    <xsl:value-of select="concat('  ', format-number(sum($records/@hours) div sum($all/@hours),
        '0%'), ' of the month')"/>
    <xsl:text>&#10;</xsl:text>
  </xsl:template>

  <!-- Who worked on what: a row for each person, a column for each boat. -->
  <xsl:template name="table">
    <xsl:text>&#10;          </xsl:text>
    <xsl:for-each select="$boats">
      <xsl:sort select="@boat"/>
      <xsl:value-of select="substring(concat('          ', @boat), string-length(@boat) + 1)"/>
    </xsl:for-each>
    <xsl:text>       all&#10;</xsl:text>
    <xsl:for-each select="$people">
      <xsl:sort select="@who"/>
      <xsl:variable name="who" select="@who"/>
      <xsl:value-of select="substring(concat($who, '          '), 1, 10)"/>
      <xsl:for-each select="$boats">
        <xsl:sort select="@boat"/>
        <xsl:call-template name="hours">
          <xsl:with-param name="of" select="key('share', concat($month, ' ', $who, ' ', @boat))"/>
          <xsl:with-param name="width" select="10"/>
        </xsl:call-template>
      </xsl:for-each>
      <xsl:call-template name="hours">
        <xsl:with-param name="of" select="key('person', concat($month, ' ', $who))"/>
        <xsl:with-param name="width" select="10"/>
      </xsl:call-template>
      <xsl:text>&#10;</xsl:text>
    </xsl:for-each>
  </xsl:template>

  <!-- The hours of some records, with the right edge in place; nothing where there are none. -->
  <xsl:template name="hours">
    <xsl:param name="of" select="."/>
    <xsl:param name="width" select="7"/>
    <xsl:variable name="number">
      <xsl:if test="$of">
        <xsl:value-of select="format-number(sum($of/@hours), '0.00')"/>
      </xsl:if>
    </xsl:variable>
    <xsl:value-of select="substring(concat('          ', $number),
        string-length($number) + 11 - $width)"/>
  </xsl:template>
</xsl:stylesheet>
