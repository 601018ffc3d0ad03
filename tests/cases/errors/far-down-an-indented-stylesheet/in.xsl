<?xml version="1.0"?>
<!-- The place of the second error lies behind the end of what is written back. -->
<xsl:stylesheet version="1.0" xmlns:xsl="http://www.w3.org/1999/XSL/Transform">

          <xsl:template match="/">
                              <out>
                                        <xsl:apply-templates/>
                              </out>
          </xsl:template>

          <xsl:template match="first">
                              <xsl:value-of select="$none"/>
          </xsl:template>

          <xsl:template match="second">
                              <xsl:if test="true()">
                                        <xsl:value-of select="substring('x')"/>
                              </xsl:if>
          </xsl:template>
</xsl:stylesheet>
