<?xml version="1.0"?>
<xsl:stylesheet version="1.0" xmlns:xsl="http://www.w3.org/1999/XSL/Transform">
<xsl:output method="text"/>
<xsl:key name="kind" match="item" use="@kind"/>
<xsl:template match="/">
  <xsl:for-each select="//item[generate-id() = generate-id(key('kind', @kind)[1])]">
    <xsl:sort select="@kind"/>
    <xsl:value-of select="concat(@kind, ' (', count(key('kind', @kind)), '): ')"/>
    <xsl:for-each select="key('kind', @kind)">
      <xsl:sort/>
      <xsl:if test="position() &gt; 1">, </xsl:if>
      <xsl:value-of select="concat(., ' ', @kg)"/>
    </xsl:for-each>
    <xsl:text>&#10;</xsl:text>
  </xsl:for-each>
  <xsl:value-of select="concat('total ', sum(//@kg), ', heaviest ')"/>
  <xsl:for-each select="//item">
    <xsl:sort select="@kg" data-type="number" order="descending"/>
    <xsl:if test="position() = 1"><xsl:value-of select="."/></xsl:if>
  </xsl:for-each>
  <xsl:text>&#10;</xsl:text>
</xsl:template>
</xsl:stylesheet>
